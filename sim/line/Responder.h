#pragma once
// A virtual RDM responder on the simulated line. It receives the bytes of every packet on the
// wire, decodes them as a real responder would, and answers with the bytes of its reply.
//
// Parameters are served from a table of PID handlers per unit (the root device and each sub
// device). The checks every request needs are made once, before a handler runs: sub device out of
// range, unknown PID, unsupported command class, parameter data of the wrong length and
// write-protected parameters each give their NACK reason. Per PID a responder can answer with
// ACK_TIMER (the answer is queued and collected through QUEUED_MESSAGE) or split a long answer with
// ACK_OVERFLOW.

#include "sim/line/Random.h"
#include "sim/line/RdmCodec.h"
#include "sim/line/ResponderConfig.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zol::sim::line {

// What a responder puts on the wire in answer to one packet.
struct Transmission {
    Bytes bytes;
    double turnaroundUs = 0;
    bool dub = false; // a DISC_UNIQUE_BRANCH reply: no break, may collide
};

// A fault to put on the next reply (set through SIM_Control, for tests).
enum class ReplyFault {
    Silent,      // no reply
    Checksum,    // the checksum does not add up
    Transaction, // wrong transaction number
    SubDevice,   // wrong sub device
    Malformed,   // message length disagrees with the bytes sent
    Source,      // another source UID
    Broadcast,   // answers the next broadcast
};

bool ParseReplyFault(const std::string& name, ReplyFault& fault);

// Counters of COMMS_STATUS.
struct CommsCounters {
    uint16_t shortMessage = 0;
    uint16_t lengthMismatch = 0;
    uint16_t checksumFail = 0;
};

// Corrupts a packet on its way as a noisy line does: a flipped bit, a lost tail or an extra byte.
void CorruptPacket(Bytes& bytes, Random& random);

class Responder {
public:
    Responder(ResponderConfig config, uint64_t seed);
    Responder(const Responder&) = delete; // the PID tables point into this object
    Responder& operator=(const Responder&) = delete;

    Uid GetUid() const { return config_.uid; }
    const ResponderConfig& Config() const { return config_; }

    // A packet on the wire. Returns true with `out` filled when the responder answers. `intact`
    // tells that the packet is known to be well formed (the line checked it once for everyone).
    bool Receive(const Bytes& packet, Transmission& out, bool intact = false);

    // Modelled time, in seconds from the start of the line.
    void AdvanceTo(double now);
    double Now() const { return now_; }

    // Back to the state of the rig, at time `now`.
    void Reset(double now);

    // Faults and events set from outside.
    void InjectFault(ReplyFault fault, int count);
    void RaiseStatus(uint16_t subDevice, uint8_t type, uint16_t id, int16_t value1, int16_t value2);
    void SetConnected(bool connected) { connected_ = connected; }
    bool Connected() const { return connected_; }

    // State for "responder <uid> info".
    bool Muted() const { return muted_; }
    bool Silent() const { return now_ < silentUntil_; }
    std::string Info() const;
    const CommsCounters& Comms() const { return comms_; }
    size_t QueueCount() const;

    // A request as the handlers see it.
    struct Request {
        uint8_t commandClass = 0;
        uint16_t pid = 0;
        uint16_t subDevice = 0;
        Bytes data;
        bool broadcast = false;
    };
    // A handler's answer.
    struct Reply {
        uint8_t type = rdm::kAck;
        Bytes data;
        uint16_t pid = 0;         // QUEUED_MESSAGE answers carry the PID of the queued message
        uint8_t commandClass = 0; // and its command class
        uint16_t subDevice = 0;   // and its sub device
        bool queued = false;      // pid, command class and sub device above are set

        static Reply Ack(Bytes data = {});
        static Reply Nack(uint16_t reason);
        static Reply Timer(double seconds);
    };

    // Runs a GET or SET through the common checks and the handler (no packets involved).
    Reply Process(const Request& request);

private:
    using Handler = std::function<Reply(size_t unit, const Bytes& data)>;
    struct PidEntry {
        Handler get;
        Handler set;
        size_t getMin = 0, getMax = 0; // parameter data length a GET may carry
        size_t setMin = 0, setMax = 0;
        size_t entrySize = 1; // overflow parts split on multiples of this
        bool listed = true;   // appears in SUPPORTED_PARAMETERS
    };
    struct SensorState {
        double level = 0;
        int16_t present = 0, lowest = 0, highest = 0, recorded = 0;
    };
    struct Unit {
        const UnitConfig* config = nullptr;
        std::map<uint16_t, PidEntry> pids;
        std::string label;
        uint8_t personality = 1;
        uint16_t startAddress = 0xFFFF;
        bool identify = false;
        std::vector<SensorState> sensors;
    };
    struct StatusRecord {
        uint16_t subDevice = 0;
        uint8_t type = 0;
        uint16_t id = 0;
        int16_t value1 = 0, value2 = 0;
        double repeat = 0;
    };
    struct QueuedAnswer {
        double readyAt = 0;
        Reply reply;
    };
    struct Overflow {
        bool active = false;
        uint8_t commandClass = 0;
        uint16_t pid = 0;
        uint16_t subDevice = 0;
        Bytes request;
        Bytes data;
        size_t offset = 0;
        size_t part = 0;
    };

    void BuildTables();
    void AddStandardPids(size_t unit);
    void AddRootPids();
    PidEntry& Add(size_t unit, uint16_t pid, bool listed = true);

    Reply Dispatch(const Request& request);
    Reply Overflowing(const Request& request, const PidEntry& entry, Reply reply);
    Reply QueuedMessage(uint8_t statusType);
    Bytes CollectStatus(uint8_t statusType);

    uint16_t Footprint(size_t unit) const;
    Bytes DeviceInfo(size_t unit) const;
    Bytes SensorValue(size_t unit, size_t sensor) const;
    void ResetSensor(size_t unit, size_t sensor);
    void DriftSensors(int ticks);
    int64_t ClockNow() const;
    bool AtFactoryDefaults() const;
    void ApplyFactoryDefaults();
    void Restart(bool cold);
    uint8_t MessageCount() const;

    ResponderConfig config_;
    Random random_;
    uint64_t seed_;
    std::vector<Unit> units_;
    std::vector<ReplyFault> faults_;

    // Running state.
    double now_ = 0;
    double driftClock_ = 0;
    bool connected_ = true;
    bool muted_ = false;
    double silentUntil_ = 0;
    CommsCounters comms_;
    std::deque<StatusRecord> pendingStatus_;
    std::vector<std::pair<double, StatusRecord>> rearm_;
    Bytes lastStatusBatch_;
    std::deque<QueuedAnswer> queue_;
    std::optional<Reply> lastQueued_;
    Overflow overflow_;
    std::map<uint16_t, Bytes> manufacturerValues_;
    int64_t clockOffset_ = 0; // clock = clockOffset_ + now
    uint32_t deviceHoursBase_ = 0;
    double deviceHoursSince_ = 0;
    uint32_t powerCycles_ = 0;
    uint32_t lampHours_ = 0;
    double lampOnSeconds_ = 0;
    uint32_t lampStrikes_ = 0;
    uint8_t lampState_ = 0;
    uint8_t lampOnMode_ = 0;
    uint8_t displayInvert_ = 0;
    uint8_t displayLevel_ = 0;
    uint8_t panInvert_ = 0;
    uint8_t tiltInvert_ = 0;
    uint8_t panTiltSwap_ = 0;
    std::string language_;
    uint8_t powerState_ = 0xFF;
    double selfTestUntil_ = 0;
};

} // namespace zol::sim::line
