#include "sim/device/Rig.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>

namespace zol::sim {
namespace {

using nlohmann::json;

// Reads one JSON object strictly: every key must be known, and each value is checked as it is
// taken. A fault names the file and the path to the value.
class ObjectReader {
public:
    ObjectReader(const json& object, std::string file, std::string where)
        : object_(object), file_(std::move(file)), where_(std::move(where)) {
        if (!object_.is_object()) {
            Fail(where_, "must be an object");
        }
    }

    [[noreturn]] void Fail(const std::string& place, const std::string& what) const {
        throw RigError(file_ + ": " + (place.empty() ? std::string("top level") : place) + ": " + what);
    }

    std::string Place(const std::string& key) const { return where_.empty() ? key : where_ + "." + key; }
    const std::string& File() const { return file_; }

    bool Has(const std::string& key) {
        known_.insert(key);
        return object_.contains(key);
    }

    const json& Raw(const std::string& key) {
        known_.insert(key);
        return object_.at(key);
    }

    std::string String(const std::string& key, const std::string& fallback, size_t maxLength,
                       bool required = false) {
        if (!Has(key)) {
            if (required) {
                Fail(Place(key), "is missing");
            }
            return fallback;
        }
        const json& v = object_.at(key);
        const std::string what = "must be a text of 1 to " + std::to_string(maxLength) + " characters";
        if (!v.is_string()) {
            Fail(Place(key), what);
        }
        auto s = v.get<std::string>();
        if (s.empty() || s.size() > maxLength) {
            Fail(Place(key), what);
        }
        return s;
    }

    int64_t Integer(const std::string& key, int64_t fallback, int64_t lo, int64_t hi) {
        if (!Has(key)) {
            return fallback;
        }
        return IntegerValue(object_.at(key), Place(key), lo, hi);
    }

    int64_t IntegerValue(const json& v, const std::string& place, int64_t lo, int64_t hi) const {
        const std::string range =
            "must be an integer from " + std::to_string(lo) + " to " + std::to_string(hi);
        if (!v.is_number_integer()) {
            Fail(place, range);
        }
        int64_t n = 0;
        if (v.is_number_unsigned()) {
            const auto u = v.get<uint64_t>();
            if (u > static_cast<uint64_t>(hi)) {
                Fail(place, range);
            }
            n = static_cast<int64_t>(u);
        } else {
            n = v.get<int64_t>();
        }
        if (n < lo || n > hi) {
            Fail(place, range);
        }
        return n;
    }

    double Number(const std::string& key, double fallback, double lo, double hi) {
        if (!Has(key)) {
            return fallback;
        }
        const json& v = object_.at(key);
        std::ostringstream range;
        range << "must be a number from " << lo << " to " << hi;
        if (!v.is_number()) {
            Fail(Place(key), range.str());
        }
        const double d = v.get<double>();
        if (!std::isfinite(d) || d < lo || d > hi) {
            Fail(Place(key), range.str());
        }
        return d;
    }

    bool Boolean(const std::string& key, bool fallback) {
        if (!Has(key)) {
            return fallback;
        }
        const json& v = object_.at(key);
        if (!v.is_boolean()) {
            Fail(Place(key), "must be true or false");
        }
        return v.get<bool>();
    }

    // Refuses keys that were never asked for: a misspelt key would otherwise be ignored silently.
    void Finish() const {
        for (auto it = object_.begin(); it != object_.end(); ++it) {
            if (known_.count(it.key()) == 0) {
                Fail(Place(it.key()), "is not a known key");
            }
        }
    }

private:
    const json& object_;
    std::string file_;
    std::string where_;
    std::set<std::string> known_;
};

bool IsVersionText(const std::string& s) {
    int fields = 0;
    size_t digits = 0;
    for (char c : s) {
        if (c >= '0' && c <= '9') {
            ++digits;
        } else if (c == '.') {
            if (digits == 0) {
                return false;
            }
            ++fields;
            digits = 0;
        } else {
            return false;
        }
    }
    return digits > 0 && fields == 2;
}

Limits ReadLimits(ObjectReader& parent, const std::string& key, Limits fallback, int top) {
    if (!parent.Has(key)) {
        return fallback;
    }
    ObjectReader r(parent.Raw(key), parent.File(), parent.Place(key));
    Limits l;
    l.min = static_cast<int>(r.Integer("min", fallback.min, 1, top));
    l.max = static_cast<int>(r.Integer("max", fallback.max, 1, top));
    l.def = static_cast<int>(r.Integer("default", fallback.def, 1, top));
    r.Finish();
    if (l.min > l.max) {
        r.Fail(parent.Place(key), "min is above max");
    }
    if (l.def < l.min || l.def > l.max) {
        r.Fail(parent.Place(key + ".default"), "must lie from min to max");
    }
    return l;
}

std::array<uint8_t, 6> ParseUid(const std::string& text, ObjectReader& r, const std::string& place) {
    std::string hex;
    for (char c : text) {
        if (c == ':' || c == ' ') {
            continue;
        }
        if (!std::isxdigit(static_cast<unsigned char>(c))) {
            r.Fail(place, "must be twelve hexadecimal digits");
        }
        hex += c;
    }
    if (hex.size() != 12) {
        r.Fail(place, "must be twelve hexadecimal digits");
    }
    std::array<uint8_t, 6> uid{};
    for (size_t i = 0; i < 6; ++i) {
        uid[i] = static_cast<uint8_t>(std::stoi(hex.substr(i * 2, 2), nullptr, 16));
    }
    return uid;
}

void ReadIdentity(ObjectReader& port, PortSpec& setup, size_t index) {
    if (!port.Has("identity")) {
        return;
    }
    ObjectReader r(port.Raw("identity"), port.File(), port.Place("identity"));
    setup.deviceName = r.String("device_name", setup.deviceName, 120);
    setup.model = static_cast<int>(r.Integer("model", setup.model, 0, 0xFFFF));
    setup.optionByte = r.Boolean("option_byte", setup.optionByte);
    setup.hardwareRev = r.String("hardware_rev", setup.hardwareRev, 120);
    setup.firmware = r.String("firmware", setup.firmware, 15);
    if (!IsVersionText(setup.firmware)) {
        r.Fail(r.Place("firmware"), "must be three numbers with points between them");
    }
    setup.serial = r.String("serial", setup.serial, 16);
    for (char c : setup.serial) {
        if (c < '0' || c > '9') {
            r.Fail(r.Place("serial"), "must be decimal digits");
        }
    }
    // The unique id defaults to the maker's ESTA id and the low 32 bits of the serial number.
    const uint32_t low = static_cast<uint32_t>(std::stoull(setup.serial) & 0xFFFFFFFFu);
    setup.uid = {0x6B,
                 0x72,
                 static_cast<uint8_t>(low >> 24),
                 static_cast<uint8_t>(low >> 16),
                 static_cast<uint8_t>(low >> 8),
                 static_cast<uint8_t>(low)};
    if (r.Has("uid")) {
        const json& v = r.Raw("uid");
        if (!v.is_string()) {
            r.Fail(r.Place("uid"), "must be twelve hexadecimal digits");
        }
        setup.uid = ParseUid(v.get<std::string>(), r, r.Place("uid"));
    }
    setup.build = static_cast<uint32_t>(r.Integer("build", setup.build, 0, 0xFFFFFFFFll));
    if (r.Has("unsupported")) {
        const json& list = r.Raw("unsupported");
        if (!list.is_array()) {
            r.Fail(r.Place("unsupported"), "must be a list of command codes");
        }
        setup.unsupported.clear();
        for (size_t i = 0; i < list.size(); ++i) {
            setup.unsupported.push_back(static_cast<int>(
                r.IntegerValue(list[i], r.Place("unsupported") + "[" + std::to_string(i) + "]", 0, 255)));
        }
    }
    (void)index;
    r.Finish();
}

void ReadOptions(ObjectReader& port, PortSpec& setup) {
    if (!port.Has("options")) {
        return;
    }
    ObjectReader r(port.Raw("options"), port.File(), port.Place("options"));
    setup.factoryMode = r.Boolean("factory_mode", setup.factoryMode);
    setup.uploadSeconds = r.Number("upload_seconds", setup.uploadSeconds, 0.001, 600);
    setup.configureSeconds = r.Number("configure_seconds", setup.configureSeconds, 0.001, 600);
    setup.seed = static_cast<uint64_t>(r.Integer("seed", static_cast<int64_t>(setup.seed), 0, 0x7FFFFFFFll));
    r.Finish();
}

void ReadTiming(ObjectReader& port, PortSpec& setup) {
    if (port.Has("timing")) {
        ObjectReader r(port.Raw("timing"), port.File(), port.Place("timing"));
        setup.frameRate = ReadLimits(r, "frame_rate", setup.frameRate, 255);
        setup.breakUs = ReadLimits(r, "break_us", setup.breakUs, 0x7FFF);
        setup.markUs = ReadLimits(r, "mark_us", setup.markUs, 0x7FFF);
        setup.rxTimeoutMs = ReadLimits(r, "rx_timeout_ms", setup.rxTimeoutMs, 255);
        setup.frameReserveMs = static_cast<int>(r.Integer("frame_reserve_ms", setup.frameReserveMs, 0, 999));
        r.Finish();
    }
    // The coupling must always leave a legal pair: the fastest rate with the shortest time-out,
    // the longest time-out with the slowest rate, and the two defaults together.
    auto fits = [&](int rate, int timeout) { return rate * (timeout + setup.frameReserveMs) <= 1000; };
    const std::string place = port.Place("timing");
    if (!fits(setup.frameRate.max, setup.rxTimeoutMs.min)) {
        port.Fail(place,
                  "frame_rate.max with rx_timeout_ms.min and frame_reserve_ms exceed the frame period");
    }
    if (!fits(setup.frameRate.min, setup.rxTimeoutMs.max)) {
        port.Fail(place,
                  "frame_rate.min with rx_timeout_ms.max and frame_reserve_ms exceed the frame period");
    }
    if (!fits(setup.frameRate.def, setup.rxTimeoutMs.def)) {
        port.Fail(place, "the default frame rate and RX time-out do not fit in one frame period");
    }
}

void ReadInput(ObjectReader& port, PortSpec& setup, size_t portCount, size_t index) {
    if (!port.Has("input")) {
        return;
    }
    ObjectReader r(port.Raw("input"), port.File(), port.Place("input"));
    const std::string source = r.String("source", "none", 20);
    static const std::pair<const char*, InputSource> kSources[] = {
        {"none", InputSource::None},           {"generated", InputSource::Generated},
        {"alternate", InputSource::Alternate}, {"faulty", InputSource::Faulty},
        {"lost", InputSource::Lost},           {"loopback", InputSource::Loopback}};
    bool found = false;
    for (const auto& [name, value] : kSources) {
        if (source == name) {
            setup.input.source = value;
            found = true;
        }
    }
    if (!found) {
        r.Fail(r.Place("source"), "must be one of none, generated, alternate, faulty, lost, loopback");
    }
    setup.input.startCode = static_cast<int>(r.Integer("start_code", setup.input.startCode, 0, 255));
    setup.input.slots = static_cast<int>(r.Integer("slots", setup.input.slots, 0, 512));
    setup.input.rate = r.Number("rate", setup.input.rate, 0.1, 1000);
    setup.input.stepSeconds = r.Number("step_seconds", setup.input.stepSeconds, 0.001, 3600);
    setup.input.fromPort = static_cast<int>(r.Integer("from_port", 0, 0, 255));
    if (setup.input.source == InputSource::Loopback) {
        if (setup.input.fromPort < 1 || static_cast<size_t>(setup.input.fromPort) > portCount ||
            static_cast<size_t>(setup.input.fromPort) == index + 1) {
            r.Fail(r.Place("from_port"), "must name another port of the rig, from 1");
        }
    }
    r.Finish();
}

PortSpec ReadPort(const json& value, const std::string& file, size_t index, size_t portCount) {
    const std::string where = "ports[" + std::to_string(index) + "]";
    ObjectReader r(value, file, where);
    PortSpec setup;
    setup.name = r.String("name", "", 63, true);
    setup.deviceName = "DMX-ZOL MK1 USB DMX512/RDM Interface";
    setup.hardwareRev = "MK1 Rev C";
    setup.firmware = "1.0.4";
    setup.serial = std::to_string(10000417 + index);
    setup.build = 1187;
    setup.seed = index + 1;
    ReadIdentity(r, setup, index);
    ReadOptions(r, setup);
    ReadTiming(r, setup);
    ReadInput(r, setup, portCount, index);
    setup.respondersWhere = file + ": " + r.Place("responders");
    if (r.Has("responders")) {
        setup.responders = r.Raw("responders");
        if (!setup.responders.is_array()) {
            r.Fail(r.Place("responders"), "must be a list");
        }
    }
    r.Finish();
    return setup;
}

} // namespace

std::string FormatUid(const std::array<uint8_t, 6>& uid) {
    char text[16];
    std::snprintf(text, sizeof text, "%02X%02X:%02X%02X%02X%02X", uid[0], uid[1], uid[2], uid[3], uid[4],
                  uid[5]);
    return text;
}

namespace {

// Rigs nest a few levels (ports, responders, sub devices, personalities, slots); anything far
// deeper is refused before it is parsed, so that no copy or walk of the document can exhaust the
// stack.
constexpr int kMaxDepth = 64;

void CheckDepth(const std::string& text, const std::string& file) {
    int depth = 0;
    bool inString = false;
    bool escaped = false;
    size_t line = 1;
    size_t column = 0;
    for (const char c : text) {
        ++column;
        if (c == '\n') {
            ++line;
            column = 0;
        }
        if (inString) {
            if (escaped) {
                escaped = false;
            } else if (c == '\\') {
                escaped = true;
            } else if (c == '"') {
                inString = false;
            }
            continue;
        }
        if (c == '"') {
            inString = true;
        } else if (c == '{' || c == '[') {
            if (++depth > kMaxDepth) {
                throw RigError(file + ": line " + std::to_string(line) + ", column " +
                               std::to_string(column) + ": nested deeper than " + std::to_string(kMaxDepth) +
                               " levels");
            }
        } else if ((c == '}' || c == ']') && depth > 0) {
            --depth;
        }
    }
}

} // namespace

Rig ParseRig(const std::string& text, const std::string& file) {
    CheckDepth(text, file);
    json doc;
    try {
        doc = json::parse(text);
    } catch (const json::parse_error& e) {
        // Turn the byte offset into a line and column a person can find.
        size_t line = 1;
        size_t column = 1;
        const size_t end = std::min(static_cast<size_t>(e.byte > 0 ? e.byte - 1 : 0), text.size());
        for (size_t i = 0; i < end; ++i) {
            if (text[i] == '\n') {
                ++line;
                column = 1;
            } else {
                ++column;
            }
        }
        throw RigError(file + ": line " + std::to_string(line) + ", column " + std::to_string(column) +
                       ": not valid JSON");
    }
    ObjectReader top(doc, file, "");
    Rig rig;
    rig.file = file;
    rig.name = top.String("name", "unnamed rig", 120);
    rig.timeScale = top.Number("time_scale", 1.0, 0.001, 1000);
    if (!top.Has("ports")) {
        top.Fail("ports", "is missing");
    }
    const json& ports = top.Raw("ports");
    if (!ports.is_array()) {
        top.Fail("ports", "must be a list");
    }
    if (ports.size() > 16) {
        top.Fail("ports", "may hold at most 16 ports");
    }
    top.Finish();
    std::set<std::string> names;
    for (size_t i = 0; i < ports.size(); ++i) {
        PortSpec setup = ReadPort(ports[i], file, i, ports.size());
        if (!names.insert(setup.name).second) {
            top.Fail("ports[" + std::to_string(i) + "].name",
                     "\"" + setup.name + "\" is used by another port");
        }
        rig.ports.push_back(std::move(setup));
    }
    return rig;
}

Rig LoadRigFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw RigError(path + ": the rig file cannot be read");
    }
    std::ostringstream text;
    text << in.rdbuf();
    return ParseRig(text.str(), path);
}

} // namespace zol::sim
