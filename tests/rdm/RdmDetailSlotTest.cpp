// RDM_Detail and RDM_Slot: product detail and slot definition names.

#include "rdm/RDM_Detail.h"
#include "rdm/RDM_Slot.h"

#include <gtest/gtest.h>

namespace zol::rdm {
namespace {

std::string DetailName(int32_t id) {
    RDM_Detail detail;
    detail.Initialise(id);
    EXPECT_EQ(detail.TypeRef(), id);
    return detail.TypeName();
}

std::string SlotName(int32_t number) {
    RDM_Slot slot;
    slot.Initialise(number);
    return slot.Description();
}

TEST(ProductDetail, Detail0000IsNotDeclared) {
    EXPECT_EQ(DetailName(0x0000), "PRODUCT_DETAIL_NOT_DECLARED");
}

TEST(ProductDetail, Detail000AIsNotDefined10) {
    EXPECT_EQ(DetailName(0x000A), "Not Defined (10)");
}

TEST(ProductDetail, Detail7FFFIsOther) {
    EXPECT_EQ(DetailName(0x7FFF), "PRODUCT_DETAIL_OTHER");
}

TEST(ProductDetail, DataClass) {
    EXPECT_EQ(RDM_Detail().DataClass(), "RDM_Detail");
}

TEST(Slot, Number1IsIntensity) {
    EXPECT_EQ(SlotName(1), "Intensity");
}

TEST(Slot, Number0201IsUndescribed) {
    EXPECT_EQ(SlotName(0x0201), "Undescribed Slot");
}

TEST(Slot, Number00C9IsColourWheel) {
    EXPECT_EQ(SlotName(0x00C9), "Colour Wheel");
}

TEST(Slot, Number0210IsColourSemaphore) {
    EXPECT_EQ(SlotName(0x0210), "Colour Semaphore");
}

TEST(Slot, Number020AIsUndescribed) {
    EXPECT_EQ(SlotName(0x020A), "Undescribed Slot");
}

TEST(Slot, DataClass) {
    EXPECT_EQ(RDM_Slot().DataClass(), "RDM_Slot");
}

} // namespace
} // namespace zol::rdm
