#include "output.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "console/console.h"
#include "jet/format/text.h"

using jet::Value;

namespace {

constexpr char kHex[] = "0123456789ABCDEF";

template <typename Number>
void appendNumber(Number number, std::string& out) {
  char text[400];
  std::to_chars_result result{};
  if constexpr (std::is_floating_point_v<Number>)
    result = std::to_chars(text, text + sizeof text, number == 0 ? Number{0} : number, std::chars_format::fixed);
  else
    result = std::to_chars(text, text + sizeof text, number);
  out.append(text, result.ptr);
}

// `digits` with a point before the last `scale`, without trailing zeros behind it.
void appendScaled(bool negative, std::string digits, unsigned scale, std::string& out) {
  if (digits.size() <= scale) digits.insert(0, scale + 1 - digits.size(), '0');
  std::string fraction = digits.substr(digits.size() - scale);
  digits.resize(digits.size() - scale);
  while (!fraction.empty() && fraction.back() == '0') fraction.pop_back();
  if (negative && (digits != "0" || !fraction.empty())) out += '-';
  out += digits;
  if (!fraction.empty()) out += '.' + fraction;
}

void appendDecimal(const jet::Decimal& decimal, std::string& out) {
  std::array<uint32_t, 4> rest = decimal.magnitude;
  std::string digits;
  do {
    uint64_t remainder = 0;
    for (uint32_t& word : rest) {
      const uint64_t dividend = remainder << 32 | word;
      word = static_cast<uint32_t>(dividend / 10);
      remainder = dividend % 10;
    }
    digits.insert(digits.begin(), static_cast<char>('0' + remainder));
  } while (rest != std::array<uint32_t, 4>{});
  appendScaled(decimal.negative, std::move(digits), decimal.scale, out);
}

void appendTwoDigits(unsigned n, std::string& out) {
  out += static_cast<char>('0' + n / 10 % 10);
  out += static_cast<char>('0' + n % 10);
}

// Days since 1899-12-30 as year, month, day of the Gregorian calendar.
void appendDay(int64_t days, std::string& out) {
  const int64_t z = days + 693'899;  // days since 0000-03-01
  const int64_t era = (z >= 0 ? z : z - 146'096) / 146'097;
  const auto dayOfEra = static_cast<unsigned>(z - era * 146'097);
  const unsigned yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
  const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const unsigned shiftedMonth = (5 * dayOfYear + 2) / 153;
  const unsigned day = dayOfYear - (153 * shiftedMonth + 2) / 5 + 1;
  const unsigned month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
  const auto year = static_cast<unsigned>(static_cast<int64_t>(yearOfEra) + era * 400 + (month <= 2 ? 1 : 0));
  appendTwoDigits(year / 100, out);
  appendTwoDigits(year, out);
  out += '-';
  appendTwoDigits(month, out);
  out += '-';
  appendTwoDigits(day, out);
}

void appendDate(jet::Date date, std::string& out) {
  double whole = std::trunc(date.days);
  auto seconds = static_cast<int64_t>(std::round(std::abs(date.days - whole) * 86'400));
  if (seconds == 86'400) {
    seconds = 0;
    whole += 1;
  }
  appendDay(static_cast<int64_t>(whole), out);
  if (seconds == 0) return;
  out += ' ';
  appendTwoDigits(static_cast<unsigned>(seconds / 3600), out);
  out += ':';
  appendTwoDigits(static_cast<unsigned>(seconds / 60 % 60), out);
  out += ':';
  appendTwoDigits(static_cast<unsigned>(seconds % 60), out);
}

void appendHex(jet::Bytes bytes, std::string& out) {
  for (const uint8_t byte : bytes) {
    out += kHex[byte >> 4];
    out += kHex[byte & 15];
  }
}

void appendGuid(const jet::Guid& guid, std::string& out) {
  static constexpr int kOrder[] = {3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, -1, 10, 11, 12, 13, 14, 15};
  out += '{';
  for (const int i : kOrder) {
    if (i < 0)
      out += '-';
    else
      appendHex({&guid.bytes[static_cast<size_t>(i)], 1}, out);
  }
  out += '}';
}

struct Appender {
  std::string& out;
  void operator()(std::monostate) const {}
  void operator()(bool v) const { out += v ? "True" : "False"; }
  void operator()(jet::Currency v) const {
    const bool negative = v.scaled < 0;
    const uint64_t magnitude = negative ? 0 - static_cast<uint64_t>(v.scaled) : static_cast<uint64_t>(v.scaled);
    appendScaled(negative, std::to_string(magnitude), 4, out);
  }
  void operator()(jet::Date v) const { appendDate(v, out); }
  void operator()(const jet::Binary& v) const { appendHex(v, out); }
  void operator()(const jet::Text& v) const { out += jet::toUtf8(v); }
  void operator()(const jet::Guid& v) const { appendGuid(v, out); }
  void operator()(const jet::Decimal& v) const { appendDecimal(v, out); }
  template <typename Number>
  void operator()(Number v) const {
    appendNumber(v, out);
  }
};

// RFC 4180: quotes around what needs them and around the empty text, which Null must not look like.
class CsvSink : public PrintingSink {
 public:
  explicit CsvSink(Output& output) : output_(output) {}

  void begin(const std::vector<jet::sql::ResultColumn>& columns) override {
    std::string& out = output_.buffer();
    for (size_t i = 0; i < columns.size(); ++i) {
      if (i != 0) out += ',';
      appendField(jet::toUtf8(columns[i].name), out);
    }
    out += "\r\n";
  }

  bool row(std::span<const Value> values) override {
    std::string& out = output_.buffer();
    for (size_t i = 0; i < values.size(); ++i) {
      if (i != 0) out += ',';
      if (const auto* text = values[i].getIf<jet::Text>())
        appendField(jet::toUtf8(*text), out);
      else
        appendValue(values[i], out);
    }
    out += "\r\n";
    output_.mayFlush();
    return true;
  }

 private:
  static void appendField(std::string_view text, std::string& out) {
    if (!text.empty() && text.find_first_of(",\"\r\n") == std::string_view::npos) {
      out += text;
      return;
    }
    out += '"';
    for (const char c : text) {
      if (c == '"') out += '"';
      out += c;
    }
    out += '"';
  }

  Output& output_;
};

// Tabs, line ends and backslashes inside a text as \t, \n, \r and \\.
class TsvSink : public PrintingSink {
 public:
  explicit TsvSink(Output& output) : output_(output) {}

  void begin(const std::vector<jet::sql::ResultColumn>& columns) override {
    std::string& out = output_.buffer();
    for (size_t i = 0; i < columns.size(); ++i) {
      if (i != 0) out += '\t';
      appendEscaped(jet::toUtf8(columns[i].name), out);
    }
    out += '\n';
  }

  bool row(std::span<const Value> values) override {
    std::string& out = output_.buffer();
    for (size_t i = 0; i < values.size(); ++i) {
      if (i != 0) out += '\t';
      if (const auto* text = values[i].getIf<jet::Text>())
        appendEscaped(jet::toUtf8(*text), out);
      else
        appendValue(values[i], out);
    }
    out += '\n';
    output_.mayFlush();
    return true;
  }

 private:
  static void appendEscaped(std::string_view text, std::string& out) {
    for (const char c : text) {
      switch (c) {
        case '\t': out += "\\t"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\\': out += "\\\\"; break;
        default: out += c;
      }
    }
  }

  Output& output_;
};

class JsonlSink : public PrintingSink {
 public:
  explicit JsonlSink(Output& output) : output_(output) {}

  void begin(const std::vector<jet::sql::ResultColumn>& columns) override {
    for (const auto& column : columns) {
      std::string name;
      appendString(jet::toUtf8(column.name), name);
      names_.push_back(name + ':');
    }
  }

  bool row(std::span<const Value> values) override {
    std::string& out = output_.buffer();
    out += '{';
    for (size_t i = 0; i < values.size(); ++i) {
      if (i != 0) out += ',';
      out += names_[i];
      appendJson(values[i], out);
    }
    out += "}\n";
    output_.mayFlush();
    return true;
  }

 private:
  static void appendString(std::string_view text, std::string& out) {
    out += '"';
    for (const char c : text) {
      const auto byte = static_cast<unsigned char>(c);
      if (c == '"' || c == '\\') {
        out += '\\';
        out += c;
      } else if (byte < 0x20) {
        out += "\\u00";
        out += kHex[byte >> 4];
        out += kHex[byte & 15];
      } else {
        out += c;
      }
    }
    out += '"';
  }

  static void appendJson(const Value& value, std::string& out) {
    switch (value.type()) {
      case jet::Type::Null: out += "null"; return;
      case jet::Type::Boolean: out += value.get<bool>() ? "true" : "false"; return;
      case jet::Type::Text: appendString(jet::toUtf8(value.get<jet::Text>()), out); return;
      case jet::Type::Single:
        if (!std::isfinite(value.get<float>())) break;
        appendValue(value, out);
        return;
      case jet::Type::Double:
        if (!std::isfinite(value.get<double>())) break;
        appendValue(value, out);
        return;
      case jet::Type::Date:
      case jet::Type::Binary:
      case jet::Type::Guid: break;
      default: appendValue(value, out); return;
    }
    std::string text;
    appendValue(value, text);
    appendString(text, out);
  }

  Output& output_;
  std::vector<std::string> names_;
};

// Columns as wide as their widest value, which needs all rows at hand.
class TableSink : public PrintingSink {
 public:
  explicit TableSink(Output& output) : output_(output) {}

  void begin(const std::vector<jet::sql::ResultColumn>& columns) override {
    std::vector<std::string> names;
    for (const auto& column : columns) {
      names.push_back(jet::toUtf8(column.name));
      rightAligned_.push_back(isNumber(column.type));
    }
    add(std::move(names));
  }

  bool row(std::span<const Value> values) override {
    std::vector<std::string> texts(values.size());
    for (size_t i = 0; i < values.size(); ++i) {
      appendValue(values[i], texts[i]);
      for (char& c : texts[i])
        if (c == '\n' || c == '\r' || c == '\t') c = ' ';
    }
    add(std::move(texts));
    return true;
  }

  void end() override {
    for (size_t line = 0; line < lines_.size(); ++line) {
      print(lines_[line]);
      if (line == 0) printRule();
    }
    output_.write("(" + std::to_string(lines_.empty() ? 0 : lines_.size() - 1) + ")\n");
  }

 private:
  static bool isNumber(jet::Type type) {
    using jet::Type;
    return type == Type::Byte || type == Type::Integer || type == Type::Long || type == Type::Currency ||
           type == Type::Single || type == Type::Double || type == Type::Decimal;
  }

  static size_t width(std::string_view text) {
    size_t characters = 0;
    for (const char c : text) characters += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return characters;
  }

  void add(std::vector<std::string> texts) {
    widths_.resize(std::max(widths_.size(), texts.size()));
    for (size_t i = 0; i < texts.size(); ++i) widths_[i] = std::max(widths_[i], width(texts[i]));
    lines_.push_back(std::move(texts));
  }

  void print(const std::vector<std::string>& texts) {
    std::string line;
    for (size_t i = 0; i < texts.size(); ++i) {
      if (i != 0) line += " | ";
      const std::string padding(widths_[i] - width(texts[i]), ' ');
      line += rightAligned_[i] ? padding + texts[i] : texts[i] + padding;
    }
    line.resize(line.find_last_not_of(' ') + 1);
    output_.write(line + '\n');
  }

  void printRule() {
    std::string line;
    for (size_t i = 0; i < widths_.size(); ++i) line += (i == 0 ? "" : "-+-") + std::string(widths_[i], '-');
    output_.write(line + '\n');
  }

  Output& output_;
  std::vector<bool> rightAligned_;
  std::vector<size_t> widths_;
  std::vector<std::vector<std::string>> lines_;
};

}  // namespace

void Output::flush() {
  print(buffer_);
  std::fflush(stdout);
  buffer_.clear();
}

void appendValue(const Value& value, std::string& out) { std::visit(Appender{out}, value.storage()); }

std::unique_ptr<PrintingSink> makeSink(Format format, Output& output) {
  switch (format) {
    case Format::Csv: return std::make_unique<CsvSink>(output);
    case Format::Tsv: return std::make_unique<TsvSink>(output);
    case Format::Jsonl: return std::make_unique<JsonlSink>(output);
    case Format::Table: break;
  }
  return std::make_unique<TableSink>(output);
}
