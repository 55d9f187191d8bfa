#pragma once

#include <memory>
#include <string>

#include "jet/sql/engine.h"

// How rows are printed: one sink per format, writing UTF-8 to a buffered stream.
//
// All formats: numbers with a point and no grouping, currency without trailing zeros, dates YYYY-MM-DD with
// HH:MM:SS behind when there is a time, binary in upper-case hex, booleans True/False (JSON: true/false).
enum class Format { Table, Csv, Tsv, Jsonl };

// Bytes for standard output, written in large pieces.
class Output {
 public:
  ~Output() { flush(); }
  void write(std::string_view text) {
    buffer_.append(text);
    if (buffer_.size() >= kBlock) flush();
  }
  std::string& buffer() { return buffer_; }
  void mayFlush() {
    if (buffer_.size() >= kBlock) flush();
  }
  void flush();

 private:
  static constexpr size_t kBlock = 1 << 16;
  std::string buffer_;
};

// Appends a value as the text formats print it; Null appends nothing.
void appendValue(const jet::Value& value, std::string& out);

class PrintingSink : public jet::sql::RowSink {
 public:
  // Prints what is left to print at the end of a query.
  virtual void end() {}
};

std::unique_ptr<PrintingSink> makeSink(Format format, Output& output);
