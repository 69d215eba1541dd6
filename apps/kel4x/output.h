// How results leave the tool: JSON lines, CSV, text tables, messages.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "reading.h"

namespace kel4x {

/// One JSON object, without a line end: name, index, value, text, unit, status, remark, mode, seconds, error.
std::string ReadingJson(const Reading& reading);
/// The error part alone, as an object of its own for the member or step that failed.
std::string FailureJson(std::string_view name, const Failure& failure);
/// An object of texts.
std::string TextsJson(const std::vector<std::pair<std::string, std::string>>& fields);
/// A member as an object: name, kind, type, access, unit, range, modes, enumeration and the rest.
std::string MemberJson(const automation::Member& member);
/// A text in JSON quotes; bytes that are no UTF-8 are replaced.
std::string JsonText(std::string_view text);

/// A field of a CSV line, in quotes where it needs them.
std::string CsvField(std::string_view text);
/// The heading and one line of the CSV form of readings, without line ends.
std::string CsvHeading();
std::string CsvLine(const Reading& reading);

/// How many columns a text takes on a terminal.
std::size_t DisplayWidth(std::string_view text);
/// The text cut to that many columns, with an ellipsis where it was longer.
std::string Shortened(std::string_view text, std::size_t columns);

/// A table of texts, columns as wide as their widest cell; numbers lean right.
class TextTable {
 public:
  enum class Lean { kLeft, kRight };

  explicit TextTable(std::vector<std::pair<std::string, Lean>> columns) : columns_(std::move(columns)) {}

  void Add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }
  /// The table with its heading; lines are cut to `width` columns, none where it is 0.
  std::string Text(std::size_t width, bool colour) const;

 private:
  std::vector<std::pair<std::string, Lean>> columns_;
  std::vector<std::vector<std::string>> rows_;
};

/// A line on standard output, a line on standard error with the name of the program before it.
void PrintLine(std::string_view line);
void Complain(std::string_view message);

}  // namespace kel4x
