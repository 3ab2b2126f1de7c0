#include "cli/row_printer.h"

#include <algorithm>
#include <utility>

#include "adapters/console/terminal.h"

namespace sabrel::cli {
namespace {

class CsvPrinter final : public RowPrinter {
 public:
  CsvPrinter(Output& out, const std::vector<std::string>& columns) : out_(out) {
    std::vector<Variant> names;
    for (const std::string& column : columns) names.emplace_back(column);
    Row(names);
  }

  void Row(const std::vector<Variant>& values) override {
    std::string line;
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (i > 0) line += ',';
      line += CsvText(values[i]);
    }
    // A file gets the data as they are; a terminal must not be steered by them.
    out_.Write(out_.IsTerminal() ? VisibleText(line, "\n") : line);
    out_.Write("\n");
  }

  void End() override {}

 private:
  Output& out_;
};

class JsonPrinter final : public RowPrinter {
 public:
  JsonPrinter(Output& out, const std::vector<std::string>& columns) : out_(out) {
    // Compared as they are written: names that differ in bytes that are not UTF-8 look the same.
    std::vector<std::string> names;
    for (const std::string& column : columns) names.push_back(JsonString(column) + ":");
    for (std::size_t i = 0; i < columns.size(); ++i) {
      std::string key = names[i];
      for (int n = 2; std::ranges::find(keys_, key) != keys_.end() ||
                      (n > 2 && std::ranges::find(names, key) != names.end());
           ++n) {
        key = JsonString(columns[i] + "_" + std::to_string(n)) + ":";
      }
      keys_.push_back(std::move(key));
    }
  }

  void Row(const std::vector<Variant>& values) override {
    std::string line = rows_++ == 0 ? "[\n{" : ",\n{";
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (i > 0) line += ',';
      line += keys_[i] + JsonText(values[i]);
    }
    out_.Write((out_.IsTerminal() ? VisibleText(line, "\n") : line) + "}");
  }

  void End() override { out_.Write(rows_ == 0 ? "[]\n" : "\n]\n"); }

 private:
  Output& out_;
  std::vector<std::string> keys_;
  std::size_t rows_ = 0;
};

}  // namespace

std::unique_ptr<RowPrinter> MakeRowPrinter(Format format, Output& out,
                                           const std::vector<std::string>& columns) {
  switch (format) {
    case Format::kCsv: return std::make_unique<CsvPrinter>(out, columns);
    case Format::kJson: return std::make_unique<JsonPrinter>(out, columns);
    case Format::kTable: break;
  }
  return MakeTablePrinter(out, columns);
}

}  // namespace sabrel::cli
