#include "platform/linux/report_descriptor.h"

#include <algorithm>
#include <array>
#include <limits>

namespace pelm::linux_hid {
namespace {

// Short item prefix: bits 0-1 size code, bits 2-3 type, bits 4-7 tag.
constexpr uint8_t kItemSizeMask = 0x03;
constexpr unsigned kItemTypeShift = 2;
constexpr uint8_t kItemTypeMask = 0x03;
constexpr unsigned kItemTagShift = 4;
constexpr uint8_t kSizeCodeFourBytes = 3;

constexpr uint8_t kItemTypeMain = 0;
constexpr uint8_t kItemTypeGlobal = 1;

constexpr uint8_t kMainItemInput = 0x8;
constexpr uint8_t kMainItemOutput = 0x9;
constexpr uint8_t kMainItemFeature = 0xB;

constexpr uint8_t kGlobalItemReportSize = 0x7;
constexpr uint8_t kGlobalItemReportId = 0x8;
constexpr uint8_t kGlobalItemReportCount = 0x9;
constexpr uint8_t kGlobalItemPush = 0xA;
constexpr uint8_t kGlobalItemPop = 0xB;

// A long item is this prefix, a data length byte, a tag byte, then the data.
constexpr uint8_t kLongItemPrefix = 0xFE;
constexpr std::size_t kLongItemHeaderBytes = 3;
constexpr std::size_t kLongItemDataSizeOffset = 1;

constexpr uint32_t kMaxReportId = 255;
constexpr std::size_t kReportIdSlots = kMaxReportId + 1;
constexpr unsigned kBitsPerByte = 8;
constexpr uint64_t kReportIdBytes = 1;
constexpr uint64_t kMaxReportDataBytes = std::numeric_limits<uint16_t>::max() - kReportIdBytes;

enum ReportType : std::size_t { kInput, kOutput, kFeature, kReportTypeCount };

// The part of the global state that shapes report layout; Push and Pop save
// and restore it as a whole.
struct GlobalState {
  uint32_t reportSize = 0;
  uint32_t reportCount = 0;
  uint32_t reportId = 0;
};

std::size_t ShortItemDataBytes(uint8_t prefix) {
  const uint8_t code = prefix & kItemSizeMask;
  return code == kSizeCodeFourBytes ? sizeof(uint32_t) : code;
}

// Item data is little-endian. Every item read here is unsigned, so there is no
// sign extension: a one-byte Report Count of 0x80 means 128.
uint32_t ReadItemData(std::span<const uint8_t> data) {
  uint32_t value = 0;
  for (std::size_t i = 0; i < data.size(); ++i) {
    value |= static_cast<uint32_t>(data[i]) << (kBitsPerByte * i);
  }
  return value;
}

class DescriptorParser {
 public:
  bool ApplyItem(uint8_t type, uint8_t tag, uint32_t data) {
    if (type == kItemTypeMain) return ApplyMainItem(tag);
    if (type == kItemTypeGlobal) return ApplyGlobalItem(tag, data);
    return true;  // local and reserved items do not change report lengths
  }

  ReportLengths Lengths() const {
    ReportLengths lengths;
    lengths.input = LengthOf(kInput);
    lengths.output = LengthOf(kOutput);
    lengths.feature = LengthOf(kFeature);
    lengths.usesReportIds = usesReportIds_;
    return lengths;
  }

 private:
  bool ApplyMainItem(uint8_t tag) {
    switch (tag) {
      case kMainItemInput: return AddField(kInput);
      case kMainItemOutput: return AddField(kOutput);
      case kMainItemFeature: return AddField(kFeature);
      default: return true;  // collections carry no report data
    }
  }

  bool ApplyGlobalItem(uint8_t tag, uint32_t data) {
    switch (tag) {
      case kGlobalItemReportSize: state_.reportSize = data; return true;
      case kGlobalItemReportCount: state_.reportCount = data; return true;
      case kGlobalItemReportId:
        if (data == 0 || data > kMaxReportId) return false;
        state_.reportId = data;
        usesReportIds_ = true;
        return true;
      case kGlobalItemPush:
        if (stackDepth_ == stack_.size()) return false;
        stack_[stackDepth_++] = state_;
        return true;
      case kGlobalItemPop:
        if (stackDepth_ == 0) return false;
        state_ = stack_[--stackDepth_];
        return true;
      default: return true;  // logical/physical ranges, units: no effect on length
    }
  }

  bool AddField(ReportType type) {
    declared_[type] = true;
    uint64_t& bits = bits_[type][state_.reportId];
    // The product of two 32-bit values plus a total the check below keeps under
    // 2^20 cannot wrap a uint64_t.
    bits += static_cast<uint64_t>(state_.reportSize) * state_.reportCount;
    return BytesFor(bits) <= kMaxReportDataBytes;
  }

  static uint64_t BytesFor(uint64_t bits) { return (bits + kBitsPerByte - 1) / kBitsPerByte; }

  uint16_t LengthOf(ReportType type) const {
    if (!declared_[type]) return 0;
    const uint64_t longestBits = *std::max_element(bits_[type].begin(), bits_[type].end());
    // Every per-report total was checked against kMaxReportDataBytes as it grew.
    return static_cast<uint16_t>(BytesFor(longestBits) + kReportIdBytes);
  }

  GlobalState state_;
  std::array<GlobalState, kMaxGlobalStackDepth> stack_{};
  std::size_t stackDepth_ = 0;
  std::array<std::array<uint64_t, kReportIdSlots>, kReportTypeCount> bits_{};
  std::array<bool, kReportTypeCount> declared_{};
  bool usesReportIds_ = false;
};

}  // namespace

std::optional<ReportLengths> ParseReportDescriptor(std::span<const uint8_t> descriptor) {
  DescriptorParser parser;
  std::size_t offset = 0;
  while (offset < descriptor.size()) {
    const uint8_t prefix = descriptor[offset];
    const std::size_t remaining = descriptor.size() - offset;
    if (prefix == kLongItemPrefix) {
      if (remaining < kLongItemHeaderBytes) return std::nullopt;
      const std::size_t itemBytes =
          kLongItemHeaderBytes + descriptor[offset + kLongItemDataSizeOffset];
      if (remaining < itemBytes) return std::nullopt;
      offset += itemBytes;
      continue;
    }
    const std::size_t dataBytes = ShortItemDataBytes(prefix);
    if (remaining - 1 < dataBytes) return std::nullopt;
    const uint32_t data = ReadItemData(descriptor.subspan(offset + 1, dataBytes));
    const uint8_t type = (prefix >> kItemTypeShift) & kItemTypeMask;
    const uint8_t tag = prefix >> kItemTagShift;
    if (!parser.ApplyItem(type, tag, data)) return std::nullopt;
    offset += 1 + dataBytes;
  }
  return parser.Lengths();
}

}  // namespace pelm::linux_hid
