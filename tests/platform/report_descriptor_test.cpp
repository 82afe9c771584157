#include "platform/linux/report_descriptor.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace pelm::linux_hid {

void PrintTo(const ReportLengths& lengths, std::ostream* os) {
  *os << "{input " << lengths.input << ", output " << lengths.output << ", feature "
      << lengths.feature << (lengths.usesReportIds ? ", report IDs}" : ", no report IDs}");
}

namespace {

using Bytes = std::vector<uint8_t>;

// Three-button boot mouse, no report IDs (input: buttons, padding, X, Y; 3
// bytes), with long items in it. The first one's data reads as "Report Count
// 16, Input" to a parser that takes 0xFE for a short item.
const Bytes kBootMouseWithLongItems = {
    0x05, 0x01, 0x09, 0x02, 0xA1, 0x01, 0x09, 0x01, 0xA1, 0x00,
    0xFE, 0x04, 0xF0, 0x95, 0x10, 0x81, 0x02,                    // long item, 4 data bytes
    0x05, 0x09, 0x19, 0x01, 0x29, 0x03, 0x15, 0x00, 0x25, 0x01,
    0x95, 0x03, 0x75, 0x01, 0x81, 0x02, 0x95, 0x01, 0x75, 0x05, 0x81, 0x01,
    0x05, 0x01, 0x09, 0x30, 0x09, 0x31, 0x15, 0x81, 0x25, 0x7F,
    0x75, 0x08, 0x95, 0x02, 0x81, 0x06,
    0xC0, 0xC0,
    0xFE, 0x00, 0xF1};                                           // long item, no data

// Vendor-defined panel: feature reports 2 and 3 of 1 byte, 4 of 7 bytes, and
// input report 1 of 24 one-bit switches (3 bytes).
const Bytes kPanelWithFeatureReports = {
    0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01,
    0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08,
    0x85, 0x02, 0x09, 0x02, 0x95, 0x01, 0xB1, 0x02,
    0x85, 0x03, 0x09, 0x03, 0x95, 0x01, 0xB1, 0x02,
    0x85, 0x04, 0x09, 0x04, 0x95, 0x07, 0xB1, 0x02,
    0x85, 0x01, 0x05, 0x09, 0x19, 0x01, 0x29, 0x18, 0x25, 0x01,
    0x75, 0x01, 0x95, 0x18, 0x81, 0x02,
    0xC0};

// Vendor device declaring feature report 4 in two pieces (1 + 4 bytes) with
// report 2 (3 bytes) in between.
const Bytes kFeatureReportInTwoPieces = {
    0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01, 0x75, 0x08,
    0x85, 0x04, 0x09, 0x04, 0x95, 0x01, 0xB1, 0x02,
    0x85, 0x02, 0x09, 0x02, 0x95, 0x03, 0xB1, 0x02,
    0x85, 0x04, 0x09, 0x05, 0x95, 0x04, 0xB1, 0x02,
    0xC0};

// Push/Pop: report 2 (input, 4 x 16 bits) is declared between Push and Pop;
// after Pop, report 1's 2 x 8 bits apply again to an input and an output.
const Bytes kPushPop = {
    0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01,
    0x85, 0x01, 0x75, 0x08, 0x95, 0x02,
    0xA4,                                                        // Push
    0x85, 0x02, 0x75, 0x10, 0x95, 0x04, 0x09, 0x02, 0x81, 0x02,
    0xB4,                                                        // Pop
    0x09, 0x03, 0x81, 0x02,
    0x09, 0x04, 0x91, 0x02,
    0xC0};

// Nested Pushes, each popped, around one 2-byte input report.
Bytes NestedPushes(std::size_t depth) {
  // Sized up front: GCC 12 at -O3 takes inserts into the short initial vector
  // for out-of-bounds copies and fails the release build.
  Bytes descriptor(4 + 2 * depth + 2);
  const uint8_t head[] = {0x75, 0x08, 0x95, 0x02};
  std::copy(std::begin(head), std::end(head), descriptor.begin());
  std::fill_n(descriptor.begin() + 4, depth, uint8_t{0xA4});
  std::fill_n(descriptor.begin() + 4 + depth, depth, uint8_t{0xB4});
  descriptor[4 + 2 * depth] = 0x81;
  descriptor[4 + 2 * depth + 1] = 0x02;
  return descriptor;
}

struct DescriptorCase {
  std::string name;
  Bytes descriptor;
  std::optional<ReportLengths> expected;  // nullopt: malformed
};

constexpr std::nullopt_t kMalformed = std::nullopt;

const std::vector<DescriptorCase> kDescriptorCases = {
    {"LongItemsAreSkippedWhole", kBootMouseWithLongItems, ReportLengths{4, 0, 0, false}},
    {"PanelFeatureReports", kPanelWithFeatureReports, ReportLengths{4, 0, 8, true}},
    {"ReportSplitAcrossOtherIds", kFeatureReportInTwoPieces, ReportLengths{0, 0, 6, true}},
    {"PopRestoresSizeCountAndId", kPushPop, ReportLengths{9, 3, 0, true}},
    {"Empty", {}, ReportLengths{}},
    // Item data is unsigned: one byte 0x80 is 128 items, not -128.
    {"OneByteCountHighBitSet", {0x75, 0x08, 0x95, 0x80, 0x81, 0x02}, ReportLengths{129, 0, 0, false}},
    {"FourByteCount", {0x75, 0x08, 0x97, 0x03, 0x00, 0x00, 0x00, 0x81, 0x02}, ReportLengths{4, 0, 0, false}},
    {"BitsRoundUpToBytes", {0x75, 0x01, 0x95, 0x09, 0x91, 0x02}, ReportLengths{0, 3, 0, false}},
    {"HighestReportId", {0x85, 0xFF, 0x75, 0x08, 0x95, 0x02, 0x81, 0x02}, ReportLengths{3, 0, 0, true}},
    {"ReportWithoutDataIsIdOnly", {0x85, 0x05, 0x75, 0x08, 0x95, 0x00, 0xB1, 0x02}, ReportLengths{0, 0, 1, true}},
    {"LongestReportThatFits", {0x75, 0x08, 0x96, 0xFE, 0xFF, 0xB1, 0x02}, ReportLengths{0, 0, 65535, false}},
    {"TruncatedTwoByteItem", {0x05, 0x01, 0x26, 0xFF}, kMalformed},
    {"TruncatedFourByteItem", {0x75, 0x08, 0x97, 0x01, 0x00, 0x00}, kMalformed},
    {"LongItemPrefixAsLastByte", {0x05, 0x01, 0xFE}, kMalformed},
    {"TruncatedLongItemData", {0xFE, 0x05, 0xF0, 0x00, 0x00}, kMalformed},
    {"PopOnEmptyStack", {0x75, 0x08, 0x95, 0x01, 0xB4, 0x81, 0x02}, kMalformed},
    {"ReportIdZero", {0x85, 0x00, 0x75, 0x08, 0x95, 0x01, 0x81, 0x02}, kMalformed},
    {"ReportIdWithoutData", {0x84, 0x75, 0x08, 0x95, 0x01, 0x81, 0x02}, kMalformed},
    {"ReportIdAbove255", {0x86, 0x00, 0x01, 0x75, 0x08, 0x95, 0x01, 0x81, 0x02}, kMalformed},
    {"ReportOneByteTooLong", {0x75, 0x08, 0x96, 0xFF, 0xFF, 0xB1, 0x02}, kMalformed},
    {"ReportGrowsPastLimit",
     {0x75, 0x08, 0x96, 0xFE, 0xFF, 0xB1, 0x02, 0x75, 0x01, 0x95, 0x01, 0xB1, 0x02}, kMalformed},
    // Largest size times largest count: the product must not wrap to something small.
    {"HugeSizeTimesHugeCount",
     {0x77, 0xFF, 0xFF, 0xFF, 0xFF, 0x97, 0xFF, 0xFF, 0xFF, 0xFF, 0x81, 0x02}, kMalformed},
    {"PushesUpToTheLimit", NestedPushes(kMaxGlobalStackDepth), ReportLengths{3, 0, 0, false}},
    {"OnePushTooMany", NestedPushes(kMaxGlobalStackDepth + 1), kMalformed},
};

class ParseReportDescriptorTest : public testing::TestWithParam<DescriptorCase> {};

TEST_P(ParseReportDescriptorTest, GivesWindowsReportLengths) {
  EXPECT_EQ(ParseReportDescriptor(GetParam().descriptor), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Descriptors, ParseReportDescriptorTest, testing::ValuesIn(kDescriptorCases),
                         [](const testing::TestParamInfo<DescriptorCase>& info) { return info.param.name; });

}  // namespace
}  // namespace pelm::linux_hid
