#include <algorithm>
#include <numeric>
#include <utility>

#include "cli/display_width.h"
#include "cli/row_printer.h"

namespace sabrel::cli {
namespace {

constexpr std::size_t kRowsForWidths = 500;
constexpr std::string_view kBetween = "  ";
// Where columns would get narrower than this, a row becomes a list of its fields.
constexpr std::size_t kLeastColumn = 4;

struct Cell {
  std::string text;
  bool is_null = false;
};
using Cells = std::vector<Cell>;

class TablePrinter final : public RowPrinter {
 public:
  TablePrinter(Output& out, const std::vector<std::string>& columns) : out_(out) {
    for (const std::string& column : columns) {
      names_.push_back(TableText(Variant(column)));
      columns_.push_back({DisplayWidth(names_.back()), 0, false, false});
    }
  }

  void Row(const std::vector<Variant>& values) override {
    Cells cells;
    for (std::size_t i = 0; i < values.size(); ++i) {
      cells.push_back({TableText(values[i]), values[i].IsNull()});
      if (started_) continue;
      Column& column = columns_[i];
      column.data_width = std::max(column.data_width, DisplayWidth(cells.back().text));
      if (IsNumber(values[i])) {
        column.has_number = true;
      } else if (!values[i].IsNull()) {
        column.has_other = true;
      }
    }
    if (started_) return Print(cells);
    waiting_.push_back(std::move(cells));
    if (waiting_.size() == kRowsForWidths) Start();
  }

  void End() override {
    if (!started_) Start();
  }

 private:
  struct Column {
    std::size_t width = 0;
    std::size_t data_width = 0;
    bool has_number = false;
    bool has_other = false;
    [[nodiscard]] bool AlignsRight() const { return has_number && !has_other; }
  };

  void Start() {
    started_ = true;
    FitColumns();
    if (!as_lists_) PrintHeader();
    for (const Cells& cells : std::exchange(waiting_, {})) Print(cells);
  }

  [[nodiscard]] std::size_t TotalWidth() const {
    const std::size_t gaps = columns_.empty() ? 0 : (columns_.size() - 1) * kBetween.size();
    return std::accumulate(columns_.begin(), columns_.end(), gaps,
                           [](std::size_t sum, const Column& c) { return sum + c.width; });
  }

  // Long names give way before data, and the widest column first, so that short ones stay readable.
  void FitColumns() {
    for (Column& column : columns_) column.width = std::max(column.width, column.data_width);
    limit_ = out_.Width();
    if (!limit_) return;
    for (Column& column : columns_) column.width = std::min(column.width, *limit_);
    const auto excess = [](const Column& c) {
      return c.width - std::min(c.width, std::max(c.data_width, kLeastColumn));
    };
    while (TotalWidth() > *limit_) {
      auto narrowed = std::ranges::max_element(columns_, {}, excess);
      if (excess(*narrowed) == 0) narrowed = std::ranges::max_element(columns_, {}, &Column::width);
      if (narrowed->width <= kLeastColumn) {
        as_lists_ = true;
        return;
      }
      --narrowed->width;
    }
  }

  void PrintHeader() {
    Cells header;
    std::string rule;
    for (std::size_t i = 0; i < names_.size(); ++i) {
      header.push_back({names_[i], false});
      if (i > 0) rule += kBetween;
      rule += std::string(columns_[i].width, '-');
    }
    Print(header);
    out_.Write(rule + "\n");
  }

  void Print(const Cells& cells) {
    if (as_lists_) return PrintList(cells);
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (i > 0) line += kBetween;
      const Column& column = columns_[i];
      const std::string text = limit_ ? FitToWidth(cells[i].text, column.width) : cells[i].text;
      const std::size_t width = DisplayWidth(text);
      const std::string fill(column.width > width ? column.width - width : 0, ' ');
      if (column.AlignsRight()) line += fill;
      line += Styled(text, cells[i].is_null);
      if (!column.AlignsRight() && i + 1 < cells.size()) line += fill;
    }
    out_.Write(line + "\n");
  }

  void PrintList(const Cells& cells) {
    std::size_t name_width = 0;
    for (const std::string& name : names_) name_width = std::max(name_width, DisplayWidth(name));
    name_width = std::min(name_width, *limit_ / 2);
    out_.Write("-- row " + std::to_string(++lists_) + "\n");
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const std::string name = FitToWidth(names_[i], name_width);
      out_.Write(name + std::string(name_width - DisplayWidth(name), ' ') + std::string(kBetween) +
                 Styled(FitToWidth(cells[i].text, *limit_ - name_width - kBetween.size()),
                        cells[i].is_null) +
                 "\n");
    }
  }

  [[nodiscard]] std::string Styled(const std::string& text, bool is_null) const {
    return is_null && out_.UsesStyles() ? "\x1b[2m" + text + "\x1b[0m" : text;
  }

  Output& out_;
  std::vector<std::string> names_;
  std::vector<Column> columns_;
  std::vector<Cells> waiting_;
  std::optional<std::size_t> limit_;
  std::size_t lists_ = 0;
  bool started_ = false;
  bool as_lists_ = false;
};

}  // namespace

std::unique_ptr<RowPrinter> MakeTablePrinter(Output& out, const std::vector<std::string>& columns) {
  return std::make_unique<TablePrinter>(out, columns);
}

}  // namespace sabrel::cli
