#pragma once
// Turns command-line words into the values the library's exports take, one
// parameter type at a time, so that the operation table can bind any export
// by its signature.

#include <concepts>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "tools/pelmctl/operations.h"

namespace pelmctl::binding {

// Hands out the command-line arguments in order.
class ArgumentCursor {
 public:
  ArgumentCursor(const std::vector<std::string>& arguments, uint32_t positions)
      : arguments_(arguments), positions_(positions) {}
  const std::string& Next() { return arguments_.at(next_++); }
  uint32_t Positions() const { return positions_; }

 private:
  const std::vector<std::string>& arguments_;
  uint32_t positions_;
  std::size_t next_ = 0;
};

std::vector<uint8_t> ParseByteList(const std::string& text, uint32_t positions);
std::vector<uint16_t> ParseWordList(const std::string& text, uint32_t positions);

template <class Parameter>
struct Param;

template <>
struct Param<uint32_t> {
  static constexpr bool kIsInput = true;
  static constexpr ArgumentKind kKind = ArgumentKind::Number;
  explicit Param(ArgumentCursor& cursor) : value(ParseNumber(cursor.Next(), "number")) {}
  uint32_t Get() const { return value; }
  void Collect(std::vector<int64_t>&) const {}
  uint32_t value;
};

template <>
struct Param<const char*> {
  static constexpr bool kIsInput = true;
  static constexpr ArgumentKind kKind = ArgumentKind::Text;
  explicit Param(ArgumentCursor& cursor) : text(cursor.Next()) {}
  const char* Get() const { return text.c_str(); }
  void Collect(std::vector<int64_t>&) const {}
  std::string text;
};

template <>
struct Param<const uint8_t*> {
  static constexpr bool kIsInput = true;
  static constexpr ArgumentKind kKind = ArgumentKind::Bytes;
  explicit Param(ArgumentCursor& cursor) : bytes(ParseByteList(cursor.Next(), cursor.Positions())) {}
  const uint8_t* Get() const { return bytes.data(); }
  void Collect(std::vector<int64_t>&) const {}
  std::vector<uint8_t> bytes;
};

template <>
struct Param<const uint16_t*> {
  static constexpr bool kIsInput = true;
  static constexpr ArgumentKind kKind = ArgumentKind::Words;
  explicit Param(ArgumentCursor& cursor) : words(ParseWordList(cursor.Next(), cursor.Positions())) {}
  const uint16_t* Get() const { return words.data(); }
  void Collect(std::vector<int64_t>&) const {}
  std::vector<uint16_t> words;
};

// An output variable: the export writes it, the result reports it.
template <std::integral Value>
struct Param<Value*> {
  static constexpr bool kIsInput = false;
  static constexpr ArgumentKind kKind = ArgumentKind::Number;
  explicit Param(ArgumentCursor&) {}
  Value* Get() { return &value; }
  void Collect(std::vector<int64_t>& values) const { values.push_back(static_cast<int64_t>(value)); }
  Value value{};
};

template <auto Export>
struct Bound;

// Binds an export `int32_t f(int32_t deviceIndex, P...)` to command-line words.
template <class... Parameters, int32_t (*Export)(int32_t, Parameters...)>
struct Bound<Export> {
  static OperationResult Call(int32_t deviceIndex, const std::vector<std::string>& arguments, uint32_t positions) {
    ArgumentCursor cursor(arguments, positions);
    // Braced initialisation parses the words strictly left to right.
    std::tuple<Param<Parameters>...> params{Param<Parameters>(cursor)...};
    OperationResult result;
    result.status = std::apply([&](auto&... param) { return Export(deviceIndex, param.Get()...); }, params);
    std::apply([&](const auto&... param) { (param.Collect(result.values), ...); }, params);
    return result;
  }
  static std::vector<ArgumentKind> Arguments() {
    std::vector<ArgumentKind> kinds;
    ((Param<Parameters>::kIsInput ? kinds.push_back(Param<Parameters>::kKind) : void()), ...);
    return kinds;
  }
};

}  // namespace pelmctl::binding
