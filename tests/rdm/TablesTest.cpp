// Row counts and sample rows of the model's fixed tables.

#include "rdm/tables/RdmTables.h"

#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>

namespace zol::rdm::tables {
namespace {

template <typename Rows> std::set<int32_t> Keys(const Rows& rows) {
    std::set<int32_t> keys;
    for (const auto& row : rows) {
        keys.insert(row.id);
    }
    return keys;
}

TEST(RdmTables, PidCatalogueHas52Rows) {
    EXPECT_EQ(PidCatalogue().size(), 52u);
    std::set<int32_t> keys;
    for (const auto& row : PidCatalogue()) {
        keys.insert(row.pid);
    }
    EXPECT_EQ(keys.size(), 52u);
}

TEST(RdmTables, PidCatalogueHaltAndNoneCounts) {
    int getHalt = 0, setHalt = 0, getNone = 0, setNone = 0, settable = 0;
    for (const auto& row : PidCatalogue()) {
        getHalt += row.get.handling == Handling::Halt;
        setHalt += row.set.handling == Handling::Halt;
        getNone += row.get.handling == Handling::None;
        setNone += row.set.handling == Handling::None;
        settable += row.setable;
    }
    EXPECT_EQ(getHalt, 12);
    EXPECT_EQ(setHalt, 23);
    EXPECT_EQ(getNone, 4);
    EXPECT_EQ(setNone, 5);
    EXPECT_EQ(settable, 28);
}

TEST(RdmTables, PidCatalogueSampleRows) {
    const PidRow* personality = FindPid(0x00E0);
    ASSERT_NE(personality, nullptr);
    EXPECT_STREQ(personality->description, "DMX_PERSONALITY");
    EXPECT_TRUE(personality->setable);
    EXPECT_EQ(personality->get.param, RdmType::Void);
    EXPECT_EQ(personality->get.result, RdmType::Byte);
    const PidRow* status = FindPid(0x0030);
    ASSERT_NE(status, nullptr);
    EXPECT_EQ(status->set.handling, Handling::Typed);
    EXPECT_EQ(status->set.param, RdmType::Byte);
    EXPECT_EQ(status->set.result, RdmType::Empty);
    const PidRow* clear = FindPid(0x0032);
    ASSERT_NE(clear, nullptr);
    EXPECT_TRUE(clear->setable);
    EXPECT_EQ(clear->set.handling, Handling::Halt);
    EXPECT_EQ(FindPid(0x0000), nullptr);
}

TEST(RdmTables, Manufacturers179KeysWith177Names) {
    EXPECT_EQ(Manufacturers().size(), 179u);
    EXPECT_EQ(Keys(Manufacturers()).size(), 179u);
    std::set<std::string> names;
    for (const auto& row : Manufacturers()) {
        names.insert(row.text);
    }
    EXPECT_EQ(names.size(), 177u);
}

TEST(RdmTables, ManufacturerSampleRows) {
    EXPECT_EQ(ManufacturerText(-1), "ESTA");
    EXPECT_EQ(ManufacturerText(0), "ESTA");
    EXPECT_EQ(ManufacturerText(0x1234), "ESTA");
    EXPECT_EQ(ManufacturerText(0x4344), "CDCA Ltd.2");
    EXPECT_EQ(ManufacturerText(0x4A53), "JSC \"MFG\"");
    EXPECT_EQ(ManufacturerText(0x7A70), "ZP Technologies");
    EXPECT_EQ(ManufacturerText(0x3431), "Un-known");
}

TEST(RdmTables, Categories14Rows) {
    EXPECT_EQ(Categories().size(), 14u);
    EXPECT_EQ(CategoryText(0x0101), "Luminary - Fixed");
    EXPECT_EQ(CategoryText(0x01FF), "Luminary - Controlable");
    EXPECT_EQ(CategoryText(0x0200), "Luminary accessory");
    EXPECT_EQ(CategoryText(0x0700), "Scene ");
    EXPECT_EQ(CategoryText(0x0901), "Audio Equipment");
    EXPECT_EQ(CategoryText(0x0902), "Video Equipment");
    EXPECT_EQ(CategoryText(0x0903), "Audio Visual");
    EXPECT_EQ(CategoryText(0x7101), "Test Equipment");
    EXPECT_EQ(CategoryText(0x0B00), "Proprietory Equipment");
}

TEST(RdmTables, CategoryLowByteTextsPerRow) {
    std::map<int32_t, size_t> counts;
    for (const auto& row : Categories()) {
        counts[row.high] = row.lowTexts.size();
    }
    const std::map<int32_t, size_t> expected = {{0x00, 0}, {0x01, 4}, {0x02, 6}, {0x03, 0}, {0x04, 2},
                                                {0x05, 8}, {0x06, 0}, {0x07, 0}, {0x08, 2}, {0x09, 2},
                                                {0x0A, 0}, {0x70, 0}, {0x71, 0}, {-1, 0}};
    EXPECT_EQ(counts, expected);
    // A low byte with no row leaves the base text alone.
    EXPECT_EQ(CategoryText(0x0106), "Luminary");
    EXPECT_EQ(CategoryText(0x0506), "Dimmer");
    EXPECT_EQ(CategoryText(0x0509), "Dimmer - LED control");
    EXPECT_EQ(CategoryText(0x0402), "Effects - Pyro");
    EXPECT_EQ(CategoryText(0x0802), "Data Interface - Protocol");
    EXPECT_EQ(CategoryText(0x0301), "Projector");
}

TEST(RdmTables, ProductDetails80Rows) {
    EXPECT_EQ(ProductDetails().size(), 80u);
    EXPECT_EQ(Keys(ProductDetails()).size(), 80u);
    EXPECT_EQ(ProductDetailText(0x0A02), "PRODUCT_DETAIL_CONTROLLABLE_BEAKER");
}

TEST(RdmTables, Slots30Rows) {
    EXPECT_EQ(Slots().size(), 30u);
    EXPECT_EQ(Keys(Slots()).size(), 30u);
}

TEST(RdmTables, SensorTypes34Rows) {
    EXPECT_EQ(SensorTypes().size(), 34u);
    EXPECT_EQ(Keys(SensorTypes()).size(), 34u);
    EXPECT_EQ(SensorTypeText(9), "SENS_VOULUME");
    EXPECT_EQ(SensorTypeText(127), "SENS_OTHER");
}

TEST(RdmTables, Units29RowsCoverUnits0To28) {
    EXPECT_EQ(Units().size(), 29u);
    for (int unit = 0; unit <= 28; ++unit) {
        EXPECT_NE(FindUnit(unit, 0), nullptr) << unit;
    }
    EXPECT_EQ(FindUnit(29, 0), nullptr);
    EXPECT_STREQ(FindUnit(9, 2)->name, "M\xC3\xAA");
    EXPECT_EQ(FindUnit(12, -2)->shift, 5);
    EXPECT_STREQ(FindUnit(11, -2)->name, "mg");
    EXPECT_EQ(FindUnit(11, -2)->shift, 6);
}

TEST(RdmTables, UnitDescriptions29Rows) {
    EXPECT_EQ(UnitDescriptions().size(), 29u);
    EXPECT_EQ(UnitDescriptionText(22), "Angle");
    EXPECT_EQ(UnitDescriptionText(23), "Angle");
    EXPECT_EQ(UnitDescriptionText(17), "Accelleration");
    EXPECT_EQ(UnitDescriptionText(29), "Not Defined (29)");
}

TEST(RdmTables, StatusTemplates24Rows) {
    EXPECT_EQ(StatusTemplates().size(), 24u);
    EXPECT_STREQ(FindStatusTemplate(52), "Phase %d under currents at %A.");
    EXPECT_EQ(FindStatusTemplate(4), nullptr);
}

TEST(RdmTables, StatusTypes4Rows) {
    EXPECT_EQ(StatusTypes().size(), 4u);
    EXPECT_EQ(StatusTypeText(1), "Unknown");
    EXPECT_EQ(StatusTypeText(4), "Error");
}

} // namespace
} // namespace zol::rdm::tables
