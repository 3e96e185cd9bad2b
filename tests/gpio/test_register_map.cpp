#include <gtest/gtest.h>

#include <vector>

#include "capture_stdout.h"
#include "register_file.h"

namespace {

std::vector<const TMMAPNode*> records_at(uint32_t phys_base)
{
    std::vector<const TMMAPNode*> found;
    for (const TMMAPNode* node = pTMMAPNode; node != nullptr; node = node->next) {
        if (node->phys_base == phys_base) {
            found.push_back(node);
        }
    }
    return found;
}

uintptr_t at(void* mapped) { return reinterpret_cast<uintptr_t>(mapped); }

}  // namespace

TEST(Memmap, RequestsInsideOneRecordShareItAndCountUp)
{
    RegisterFile::instance().use();
    void* first = memmap(0x10000010, 128);
    EXPECT_EQ(at(memmap(0x10000800, 4)) - at(first), 0x7F0u);
    void* page = memmap(0x10000000, 0x1000);
    std::vector<const TMMAPNode*> records = records_at(0x10000000);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0]->length, 0x1000u);
    EXPECT_EQ(records[0]->refcount, 3u);
    EXPECT_EQ(records[0]->virt_base, at(page));
    EXPECT_EQ(at(first) - at(page), 0x10u);
}

TEST(Memmap, CrossingARecordsEndMakesANewOverlappingRecord)
{
    RegisterFile::instance().use();
    volatile uint32_t* near_end = static_cast<uint32_t*>(memmap(0x10010FF0, 4));
    volatile uint32_t* crossing = static_cast<uint32_t*>(memmap(0x10010FF0, 0x20));
    memmap(0x10011000, 4);  // served by the longer record
    std::vector<const TMMAPNode*> records = records_at(0x10010000);
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0]->length, 0x1000u);
    EXPECT_EQ(records[0]->refcount, 1u);
    EXPECT_EQ(records[1]->length, 0x2000u);
    EXPECT_EQ(records[1]->refcount, 2u);
    EXPECT_TRUE(records_at(0x10011000).empty());
    *crossing = 0xCAFE0001;  // both map the same registers
    EXPECT_EQ(*near_end, 0xCAFE0001u);
}

TEST(Memmap, WritesThroughAMappingLandInTheDeviceAtTheirAddress)
{
    const RegisterFile& file = RegisterFile::instance();
    file.use();
    volatile uint32_t* reg = static_cast<uint32_t*>(memmap(0x12190010, 128));
    ASSERT_NE(reg, nullptr);
    reg[0] = 0x4;
    reg[0x3F0 / 4] = 0x0F;  // 0x12190400, same page
    EXPECT_EQ(file.read(0x12190010), 0x4u);
    EXPECT_EQ(file.read(0x12190400), 0x0Fu);
    EXPECT_EQ(file.read(0x1219000C) | file.read(0x12190014), 0u);
}

TEST(Memmap, RefusalsAndDeviceFailuresAreReportedAndTheOpenRetried)
{
    CaptureStdout out;
    EXPECT_EQ(memmap(0x10020000, 0), nullptr);
    set_memmap_device("/nonexistent/mem");
    EXPECT_EQ(memmap(0x10020000, 4), nullptr);
    EXPECT_EQ(memmap(0x10020000, 4), nullptr);
    set_memmap_device("/dev/null");  // opens, but cannot be mapped
    EXPECT_EQ(memmap(0x10020040, 4), nullptr);
    EXPECT_TRUE(records_at(0x10020000).empty());
    RegisterFile::instance().use();
    EXPECT_NE(memmap(0x10020000, 4), nullptr);
    EXPECT_EQ(out.text(),
              "memmap():size can't be zero!\nmemmap():open /nonexistent/mem error!\n"
              "memmap():open /nonexistent/mem error!\nmemmap():mmap @ 0x10020000 error!\n");
}
