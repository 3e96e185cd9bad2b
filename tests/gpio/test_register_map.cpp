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

uintptr_t at(void* mapped)
{
    return reinterpret_cast<uintptr_t>(mapped);
}

}  // namespace

// Requests inside one record share it and count up; one crossing a
// record's end makes a new, longer record over the same registers.
TEST(Memmap, RecordsAreSharedOrExtended)
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

    volatile uint32_t* near_end = static_cast<uint32_t*>(memmap(0x10010FF0, 4));
    volatile uint32_t* crossing = static_cast<uint32_t*>(memmap(0x10010FF0, 0x20));
    memmap(0x10011000, 4);  // served by the longer record
    records = records_at(0x10010000);
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0]->length, 0x1000u);
    EXPECT_EQ(records[0]->refcount, 1u);
    EXPECT_EQ(records[1]->length, 0x2000u);
    EXPECT_EQ(records[1]->refcount, 2u);
    EXPECT_TRUE(records_at(0x10011000).empty());
    *crossing = 0xCAFE0001;
    EXPECT_EQ(*near_end, 0xCAFE0001u);
}

TEST(Memmap, RefusalsAndDeviceFailuresAreReportedAndTheOpenRetried)
{
    CaptureStdout out;
    EXPECT_EQ(memmap(0x10020000, 0), nullptr);
    set_memmap_device("/nonexistent/mem");
    EXPECT_EQ(memmap(0x10020000, 4), nullptr);
    EXPECT_EQ(memmap(0x10020000, 4), nullptr);
    EXPECT_TRUE(records_at(0x10020000).empty());
    RegisterFile::instance().use();
    EXPECT_NE(memmap(0x10020000, 4), nullptr);
    EXPECT_EQ(out.text(),
              "memmap():size can't be zero!\nmemmap():open /nonexistent/mem error!\n"
              "memmap():open /nonexistent/mem error!\n");
}

// The diagnostic poke writes the register it names.
TEST(Himm, WritesTheRegisterItNames)
{
    const RegisterFile& file = RegisterFile::instance();
    file.use();
    char addr[] = "0x10030008", value[] = "305419896";
    EXPECT_NE(himm(addr, value), nullptr);
    EXPECT_EQ(file.read(0x10030008), 0x12345678u);
}
