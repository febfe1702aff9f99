#pragma once
// DEV_Status: what is known of the connected local device (whether it runs its factory firmware,
// and whether newer firmware is known for its model), with a hush for the update question.

#include "framework/seam/DataObject.h"

#include <string>

namespace zol {

class DEV_Status : public DataObject {
public:
    std::string DataClass() const override { return "DEV_Status"; }
    // Reads the factory mode and compares the device's firmware with the newest known for its
    // model. Quiet true also lifts a hush.
    void Probe(bool quiet);
    void Hush() { hushed_ = true; }
    bool Factory() const { return factoryMode_; }
    bool Updates() const { return updateFound_ && !hushed_; }

    // The firmware held as newest for a model when the settings hold nothing.
    static std::string DefaultFirmware(int32_t model);

private:
    void ProbeFactory();
    void ProbeUpdates();

    bool factoryMode_ = false;
    bool updateFound_ = false;
    bool hushed_ = false;
};

namespace Versions {
// Compares two versions of three fields ("0.3.010" and "0.3.10" are equal: fields are numbers; a
// missing or empty field is 0). Returns 1 when `stored` is newer, -1 when `present` is newer, 0
// when equal. A field that is not a number raises run-time error 13, one too large error 6.
int Compare(const std::string& stored, const std::string& present);
// True at the first field where `stored` is greater; a field where `present` is greater does not
// end the walk, so an older major with a newer minor reads as newer.
bool AnyFieldGreater(const std::string& stored, const std::string& present);
} // namespace Versions

} // namespace zol
