#pragma once

#include <optional>
#include <string>
#include <vector>

// A field of a csv row: nullopt is the empty unquoted one.
using CsvField = std::optional<std::string>;
using CsvRow = std::vector<CsvField>;

// Reads RFC 4180 text; lines may end with CR LF or LF.
inline std::vector<CsvRow> parseCsv(const std::string& text) {
  std::vector<CsvRow> rows;
  CsvRow row;
  size_t at = 0;
  while (at < text.size()) {
    CsvField field;
    if (text[at] == '"') {
      field.emplace();
      for (++at; at < text.size(); ++at) {
        if (text[at] != '"')
          *field += text[at];
        else if (at + 1 < text.size() && text[at + 1] == '"')
          *field += text[++at];
        else
          break;
      }
      ++at;
    } else {
      const size_t end = text.find_first_of(",\r\n", at);
      if (end != at) field = text.substr(at, end - at);
      at = end == std::string::npos ? text.size() : end;
    }
    row.push_back(std::move(field));
    if (at < text.size() && text[at] == ',') {
      ++at;
      if (at == text.size() || text[at] == '\r' || text[at] == '\n')
        row.emplace_back();
      else
        continue;
    }
    if (at < text.size() && text[at] == '\r') ++at;
    if (at < text.size() && text[at] == '\n') ++at;
    rows.push_back(std::move(row));
    row.clear();
  }
  return rows;
}
