// Sensor types, the unit table that UnitScale reads (name and display shift by unit and range),
// and the unit descriptions. The odd pairs stand as they are: range -2 of current and of mass is a
// shift of 6 ("nA", "mg"), of length a shift of 5 ("nm"). The resistance names use the character
// of code 234.

#include "rdm/tables/RdmTables.h"

namespace zol::rdm::tables {

namespace {
constexpr IdText kSensorTypes[] = {
    {0, "SENS_TEMPERATURE"},
    {1, "SENS_VOLTAGE"},
    {2, "SENS_CURRENT"},
    {3, "SENS_FREQUENCY"},
    {4, "SENS_RESISTANCE"},
    {5, "SENS_POWER"},
    {6, "SENS_MASS"},
    {7, "SENS_LENGTH"},
    {8, "SENS_AREA"},
    {9, "SENS_VOULUME"},
    {10, "SENS_DENSITY"},
    {11, "SENS_VELOCITY"},
    {12, "SENS_ACCELERATION"},
    {13, "SENS_FORCE"},
    {14, "SENS_ENERGY"},
    {15, "SENS_PRESSURE"},
    {16, "SENS_TIME"},
    {17, "SENS_ANGLE"},
    {18, "SENS_POSITIONX"},
    {19, "SENS_POSITIONY"},
    {20, "SENS_POSITIONZ"},
    {21, "SENS_ANGULAR_VELOCITY"},
    {22, "SENS_LUMINOUS_INTENSITY"},
    {23, "SENS_LUMINOUS_FLUX"},
    {24, "SENS_ILLUMINANCE"},
    {25, "SENS_CHROMINANCE_RED"},
    {26, "SENS_CHROMINANCE_GREEN"},
    {27, "SENS_CHROMINANCE_BLUE"},
    {28, "SENS_CONTACTS"},
    {29, "SENS_MEMORY"},
    {30, "SENS_ITEMS"},
    {31, "SENS_HUMIDITY"},
    {32, "SENS_COUNTER_16BIT"},
    {127, "SENS_OTHER"},
};

// The same name and no shift in every range.
#define ZOL_SAME(name)                                                                                       \
    {                                                                                                        \
        {name, 0}, {name, 0}, {name, 0}, {name, 0}, {                                                        \
            name, 0                                                                                          \
        }                                                                                                    \
    }

// Cells by range: 2, 1, 0, -1, -2.
constexpr UnitRow kUnits[] = {
    {0, ZOL_SAME("Not Specified")},
    {1, {{"k°", -3}, {"k°", -3}, {"°", 0}, {"°", 0}, {"°", 0}}},
    {2, {{"MV", -6}, {"kV", -3}, {"Volts", 0}, {"mV", 3}, {"mV", 3}}},
    {3, {{"MV", -6}, {"kV", -3}, {"Volts", 0}, {"mV", 3}, {"mV", 3}}},
    {4, {{"MV", -6}, {"kV", -3}, {"Volts", 0}, {"mV", 3}, {"mV", 3}}},
    {5, {{"MA", -6}, {"kA", -3}, {"Amps", 0}, {"mA", 3}, {"nA", 6}}},
    {6, {{"MA", -6}, {"kA", -3}, {"Amps", 0}, {"mA", 3}, {"nA", 6}}},
    {7, {{"MA", -6}, {"kA", -3}, {"Amps", 0}, {"mA", 3}, {"nA", 6}}},
    {8, {{"MHz", -6}, {"kHz", -3}, {"Hz", 0}, {"Hz", 0}, {"Hz", 0}}},
    {9, {{"M\u00EA", -6}, {"k\u00EA", -3}, {"Ohms", 0}, {"m\u00EA", 3}, {"m\u00EA", 3}}},
    {10, {{"MW", -6}, {"kW", -3}, {"Watts", 0}, {"mW", 3}, {"mW", 3}}},
    {11, {{"Kt", -6}, {"tonne", -3}, {"kg", 0}, {"gram", 3}, {"mg", 6}}},
    {12, {{"km", -3}, {"km", -3}, {"m", 0}, {"mm", 3}, {"nm", 5}}},
    {13, ZOL_SAME("m²")},
    {14, ZOL_SAME("m3")},
    {15, ZOL_SAME("KG/m3")},
    {16, ZOL_SAME("m/s")},
    {17, ZOL_SAME("m/s²")},
    {18, ZOL_SAME("Newtons")},
    {19, {{"MJ", -6}, {"KJ", -3}, {"Joule", 0}, {"Joule", 0}, {"Joule", 0}}},
    {20, ZOL_SAME("pascal")},
    {21, {{"second", 0}, {"second", 0}, {"second", 0}, {"millisecond", 3}, {"nanosecond", 6}}},
    {22, ZOL_SAME("°")},
    {23, ZOL_SAME("radian")},
    {24, {{"cd", 0}, {"cd", 0}, {"cd", 0}, {"mcd", 3}, {"mcd", 3}}},
    {25, ZOL_SAME("lm")},
    {26, ZOL_SAME("lx")},
    {27, ZOL_SAME("Ire")},
    {28, ZOL_SAME("Byte")},
};

#undef ZOL_SAME

constexpr IdText kUnitDescriptions[] = {
    {0, "Not Specified"},
    {1, "Temperature"},
    {2, "DC Voltage"},
    {3, "AC Peak Voltage"},
    {4, "AC RMS Voltage"},
    {5, "DC Current"},
    {6, "Peak Current"},
    {7, "RMS Current"},
    {8, "Frequency"},
    {9, "Resistance"},
    {10, "Power"},
    {11, "Mass"},
    {12, "Length"},
    {13, "Area"},
    {14, "Volume"},
    {15, "Density"},
    {16, "Velocity"},
    {17, "Accelleration"},
    {18, "Force"},
    {19, "Energy"},
    {20, "Pressure"},
    {21, "Duration"},
    {22, "Angle"},
    {23, "Angle"},
    {24, "Luminous Intensity"},
    {25, "Luminous Flux"},
    {26, "Illuminance"},
    {27, "Ire"},
    {28, "Data Size"},
};

std::string NotDefined(int32_t number) {
    return "Not Defined (" + std::to_string(number) + ")";
}

std::string Lookup(std::span<const IdText> table, int32_t id) {
    for (const auto& row : table) {
        if (row.id == id) {
            return row.text;
        }
    }
    return NotDefined(id);
}
} // namespace

std::span<const IdText> SensorTypes() {
    return kSensorTypes;
}
std::string SensorTypeText(int32_t type) {
    return Lookup(kSensorTypes, type);
}

std::span<const UnitRow> Units() {
    return kUnits;
}

const UnitCell* FindUnit(int32_t unit, int range) {
    if (range < -2 || range > 2) {
        return nullptr;
    }
    for (const auto& row : kUnits) {
        if (row.unit == unit) {
            return &row.byRange[2 - range];
        }
    }
    return nullptr;
}

std::span<const IdText> UnitDescriptions() {
    return kUnitDescriptions;
}
std::string UnitDescriptionText(int32_t unit) {
    return Lookup(kUnitDescriptions, unit);
}

} // namespace zol::rdm::tables
