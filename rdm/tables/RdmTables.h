#pragma once
// The fixed tables of the RDM model: PID catalogue, manufacturers, categories, product details,
// slot definitions, sensor types, units, unit descriptions, status templates and status types.
// Each table lives in one place (one .cpp in this folder) as a constant array; the look-ups below
// are the only way the model reads them.

#include "rdm/RdmValue.h"

#include <cstdint>
#include <span>
#include <string>

namespace zol::rdm::tables {

struct IdText {
    int32_t id;
    const char* text;
};

// ---- PID catalogue ----

// How an operation (GET or SET) treats a PID.
enum class Handling : uint8_t {
    None,  // no case: the call fails with "PID Not handled "
    Halt,  // the operation was never written: the call stops the program
    Typed, // parameter type and result type below
};

struct Signature {
    Handling handling;
    RdmType param;
    RdmType result; // RdmType::Empty: no result type at all
};

struct PidRow {
    int32_t pid;
    const char* description;
    bool setable;
    Signature get;
    Signature set;
};

std::span<const PidRow> PidCatalogue();
const PidRow* FindPid(int32_t pid); // nullptr when the PID has no row

// ---- Manufacturers ----
std::span<const IdText> Manufacturers();
std::string ManufacturerText(int32_t id); // "Un-known" when the id has no row

// ---- Product categories ----
struct CategoryRow {
    int32_t high;                     // the category's high byte; -1 for the row of any other high byte
    const char* base;                 // base text
    std::span<const IdText> lowTexts; // by low byte
    bool lowReplaces;                 // the low byte's text replaces the base instead of following it
};
std::span<const CategoryRow> Categories();
// The 16-bit category: the high byte picks the base text, the low byte its suffix.
std::string CategoryText(int32_t category);

// ---- Product details ----
std::span<const IdText> ProductDetails();
std::string ProductDetailText(int32_t id); // "Not Defined (<id>)" when the id has no row

// ---- Slot definitions ----
std::span<const IdText> Slots();
std::string SlotText(int32_t number); // "Undescribed Slot" when the number has no row

// ---- Sensors ----
std::span<const IdText> SensorTypes();
std::string SensorTypeText(int32_t type); // "Not Defined (<type>)" when the type has no row

// One cell of the unit table: the name shown and the power of ten added to the scale.
struct UnitCell {
    const char* name;
    int16_t shift;
};
// A unit's cells by range, from range 2 down to range -2.
struct UnitRow {
    int32_t unit;
    UnitCell byRange[5];
};
std::span<const UnitRow> Units();
// The cell for `unit` at `range` (-2 to 2); nullptr for a unit with no row.
const UnitCell* FindUnit(int32_t unit, int range);

std::span<const IdText> UnitDescriptions();
std::string UnitDescriptionText(int32_t unit); // "Not Defined (<unit>)" when the unit has no row

// ---- Status messages ----
std::span<const IdText> StatusTemplates();
const char* FindStatusTemplate(int32_t id); // nullptr when the id has no row

std::span<const IdText> StatusTypes();
std::string StatusTypeText(int32_t number); // "Unknown" when the number has no row

} // namespace zol::rdm::tables
