#include <gtest/gtest.h>

#include <stdint.h>

#include <vector>

#include "capture_stdout.h"
#include "register_access.h"
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

volatile uint32_t* word(void* mapped)
{
    return static_cast<volatile uint32_t*>(mapped);
}

uintptr_t address(void* mapped)
{
    return reinterpret_cast<uintptr_t>(mapped);
}

}  // namespace

TEST(Memmap, RequestsInsideOneRecordShareItAndCountUp)
{
    RegisterFile::instance().use();
    void* first = memmap(0x10000010, 128);
    ASSERT_NE(first, nullptr);
    void* second = memmap(0x10000800, 4);
    void* whole_page = memmap(0x10000000, 0x1000);

    std::vector<const TMMAPNode*> records = records_at(0x10000000);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0]->length, 0x1000u);
    EXPECT_EQ(records[0]->refcount, 3u);
    EXPECT_EQ(address(second) - address(first), 0x7F0u);
    EXPECT_EQ(address(first) - address(whole_page), 0x10u);
    EXPECT_EQ(records[0]->virt_base, address(whole_page));
}

TEST(Memmap, CrossingARecordsEndMakesANewOverlappingRecord)
{
    RegisterFile::instance().use();
    void* near_end = memmap(0x10010FF0, 4);
    void* crossing = memmap(0x10010FF0, 0x20);
    ASSERT_NE(near_end, nullptr);
    ASSERT_NE(crossing, nullptr);

    std::vector<const TMMAPNode*> records = records_at(0x10010000);
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0]->length, 0x1000u);
    EXPECT_EQ(records[1]->length, 0x2000u);
    EXPECT_NE(address(near_end), address(crossing));

    // The second page is served by the longer record, not by a third one.
    memmap(0x10011000, 4);
    EXPECT_EQ(records[0]->refcount, 1u);
    EXPECT_EQ(records[1]->refcount, 2u);
    EXPECT_TRUE(records_at(0x10011000).empty());

    // Both records map the same registers.
    *word(crossing) = 0xCAFE0001;
    EXPECT_EQ(*word(near_end), 0xCAFE0001u);
}

TEST(Memmap, WritesThroughAMappingLandInTheDeviceAtTheirAddress)
{
    const RegisterFile& file = RegisterFile::instance();
    RegisterFile::instance().use();
    void* reg = memmap(0x12190010, 128);
    ASSERT_NE(reg, nullptr);
    *word(reg) = 0x4;
    word(reg)[0x3F0 / 4] = 0x0F;  // 0x12190400, same page
    EXPECT_EQ(file.read(0x12190010), 0x4u);
    EXPECT_EQ(file.read(0x12190400), 0x0Fu);
    EXPECT_EQ(file.read(0x1219000C), 0u);
    EXPECT_EQ(file.read(0x12190014), 0u);

    file.write(0x12190020, 0x20);
    EXPECT_EQ(word(reg)[4], 0x20u);
}

TEST(Memmap, ZeroSizeIsRefused)
{
    RegisterFile::instance().use();
    CaptureStdout out;
    EXPECT_EQ(memmap(0x10020000, 0), nullptr);
    EXPECT_EQ(out.text(), "memmap():size can't be zero!\n");
    EXPECT_TRUE(records_at(0x10020000).empty());
}

TEST(Memmap, DeviceFailuresAreReportedAndTheOpenIsRetried)
{
    {
        set_memmap_device("/nonexistent/mem");
        CaptureStdout out;
        EXPECT_EQ(memmap(0x10030000, 4), nullptr);
        EXPECT_EQ(memmap(0x10030000, 4), nullptr);
        EXPECT_EQ(out.text(), "memmap():open /nonexistent/mem error!\nmemmap():open /nonexistent/mem error!\n");
    }
    {
        set_memmap_device("/dev/null");  // opens, but cannot be mapped
        CaptureStdout out;
        EXPECT_EQ(memmap(0x10030040, 4), nullptr);
        EXPECT_EQ(out.text(), "memmap():mmap @ 0x10030000 error!\n");
    }
    EXPECT_TRUE(records_at(0x10030000).empty());

    RegisterFile::instance().use();
    CaptureStdout out;
    EXPECT_NE(memmap(0x10030000, 4), nullptr);
    EXPECT_EQ(out.text(), "");
    EXPECT_EQ(records_at(0x10030000).size(), 1u);
}

TEST(Himm, PeeksAndPokesRegistersNamedByText)
{
    const RegisterFile& file = RegisterFile::instance();
    file.use();
    char addr[] = "0x10040010";
    char value[] = "305419896";  // 0x12345678
    void* poked = himm(addr, value);
    ASSERT_NE(poked, nullptr);
    EXPECT_EQ(file.read(0x10040010), 0x12345678u);
    EXPECT_EQ(himm(addr, nullptr), poked);

    char bad_addr[] = "0x1004001G";
    char bad_value[] = "12a";
    CaptureStdout out;
    EXPECT_EQ(himm(bad_addr, nullptr), nullptr);
    EXPECT_EQ(himm(bad_addr, value), nullptr);
    EXPECT_EQ(himm(addr, bad_value), nullptr);
    EXPECT_EQ(out.text(), "ERROR:Please input addr like 0x12345678\nERROR:xxx\nERROR:xxx\n");
    EXPECT_EQ(file.read(0x10040010), 0x12345678u);
}
