#include "bench/results_report.h"

#include <algorithm>
#include <cstdio>

namespace pelm::bench {
namespace {

std::string Formatted(double value) {
  char text[32];
  std::snprintf(text, sizeof text, value >= 1000 || value <= -1000 ? "%.0f" : "%.2f", value);
  return text;
}

std::string TargetOf(const Figure& figure) {
  if (!figure.limit) return "-";
  return (figure.higherIsBetter ? ">= " : "<= ") + Formatted(*figure.limit);
}

std::string VerdictOf(const Figure& figure) {
  const auto met = figure.Met();
  if (!met) return "-";
  return *met ? "met" : "NOT MET";
}

std::string Padded(const std::string& text, std::size_t width) {
  return text + std::string(width > text.size() ? width - text.size() : 0, ' ');
}

std::string JsonString(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + "\"";
}

}  // namespace

void PrintTable(std::ostream& out, const std::vector<Figure>& figures, const std::vector<std::string>& notes) {
  std::size_t nameWidth = 0;
  for (const Figure& figure : figures) nameWidth = std::max(nameWidth, figure.name.size());
  constexpr std::size_t kValueWidth = 12, kUnitWidth = 15, kTargetWidth = 12, kVerdictWidth = 9;
  out << Padded("figure", nameWidth + 2) << Padded("value", kValueWidth) << Padded("unit", kUnitWidth)
      << Padded("target", kTargetWidth) << Padded("verdict", kVerdictWidth) << "notes\n";
  for (const Figure& figure : figures) {
    out << Padded(figure.name, nameWidth + 2) << Padded(Formatted(figure.value), kValueWidth)
        << Padded(figure.unit, kUnitWidth) << Padded(TargetOf(figure), kTargetWidth)
        << Padded(VerdictOf(figure), kVerdictWidth) << figure.note << "\n";
  }
  out << "\nNotes:\n";
  for (const std::string& note : notes) out << "- " << note << "\n";
}

void WriteJson(std::ostream& out, const std::vector<Figure>& figures, const std::vector<std::string>& notes) {
  out << "{\n  \"figures\": [\n";
  for (std::size_t i = 0; i < figures.size(); ++i) {
    const Figure& figure = figures[i];
    const auto met = figure.Met();
    out << "    {\"name\": " << JsonString(figure.name) << ", \"value\": " << figure.value
        << ", \"unit\": " << JsonString(figure.unit)
        << ", \"limit\": " << (figure.limit ? std::to_string(*figure.limit) : "null")
        << ", \"higher_is_better\": " << (figure.higherIsBetter ? "true" : "false")
        << ", \"met\": " << (met ? (*met ? "true" : "false") : "null")
        << ", \"note\": " << JsonString(figure.note) << "}" << (i + 1 < figures.size() ? "," : "") << "\n";
  }
  out << "  ],\n  \"notes\": [\n";
  for (std::size_t i = 0; i < notes.size(); ++i) {
    out << "    " << JsonString(notes[i]) << (i + 1 < notes.size() ? "," : "") << "\n";
  }
  out << "  ]\n}\n";
}

}  // namespace pelm::bench
