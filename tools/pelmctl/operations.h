#pragma once
// Every setter and getter of the eighteen families, as one table: the family,
// the operation's command-line name, the arguments it takes, the values it
// gives back and the export it calls. `pelmctl set` and `pelmctl get` are this
// table and nothing else.

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace pelmctl {

// A command line that names something that does not exist or gives a value the
// operation cannot take; the message says which and what is expected.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class ArgumentKind {
  Number,     // an unsigned number, decimal or 0x-hex
  Text,       // the characters to show
  Bytes,      // comma-separated segment bytes, one per display position
  Words,      // comma-separated sixteen-segment glyphs, one per position
};

enum class Direction { Set, Get };

struct OperationResult {
  int32_t status = 0;
  std::vector<int64_t> values;  // a getter's outputs, in the export's order
};

struct Operation {
  std::string_view family;
  std::string_view name;
  Direction direction;
  std::vector<ArgumentKind> arguments;
  std::vector<std::string_view> argumentNames;
  std::vector<std::string_view> outputNames;
  uint32_t positions;  // bytes or glyphs a Bytes or Words argument must have
  OperationResult (*call)(int32_t deviceIndex, const std::vector<std::string>& arguments, uint32_t positions);
};

std::span<const Operation> AllOperations();

// The operation, or UsageError naming the families or operations there are.
const Operation& FindOperation(std::string_view family, std::string_view name, Direction direction);

// "ldisplay-text TEXT" for usage messages.
std::string Synopsis(const Operation& operation);

// Checks the argument count and every argument's form, then calls the export.
// Throws UsageError before calling anything when an argument is wrong.
OperationResult Invoke(const Operation& operation, int32_t deviceIndex, const std::vector<std::string>& arguments);

// Parses an unsigned 32-bit number (decimal or 0x-hex); UsageError otherwise.
uint32_t ParseNumber(std::string_view text, std::string_view what);

}  // namespace pelmctl
