#include "sabrel/platform/row_block.h"

#include <cstring>
#include <limits>

namespace sabrel {

void RowBlock::Start(VariantKind kind) {
  if (bytes_.size() > std::numeric_limits<std::uint32_t>::max()) {
    throw RuntimeError(RuntimeErrorNumber::kOutOfMemory, "A block of rows exceeds 4 GB");
  }
  offsets_.push_back(static_cast<std::uint32_t>(bytes_.size()));
  bytes_.push_back(static_cast<char>(kind));
}

template <class T>
void RowBlock::Append(VariantKind kind, const T& value) {
  Start(kind);
  char raw[sizeof(T)];
  std::memcpy(raw, &value, sizeof(T));
  bytes_.append(raw, sizeof(T));
}

void RowBlock::AddNull() { Start(VariantKind::kNull); }
void RowBlock::AddInt32(std::int32_t value) { Append(VariantKind::kInt32, value); }
void RowBlock::AddDouble(double value) { Append(VariantKind::kDouble, value); }
void RowBlock::AddDecimal(const Decimal& value) { Append(VariantKind::kDecimal, value); }
void RowBlock::AddDate(Date value) { Append(VariantKind::kDate, value); }

void RowBlock::AddText(std::string_view value) {
  Start(VariantKind::kString);
  bytes_.append(value);
}

void RowBlock::AddWhole(std::int64_t value) {
  if (value >= std::numeric_limits<std::int32_t>::min() &&
      value <= std::numeric_limits<std::int32_t>::max()) {
    AddInt32(static_cast<std::int32_t>(value));
  } else {
    AddDecimal(Decimal(value));
  }
}

void RowBlock::DropUnfinishedRow() {
  const std::size_t kept = rows_ * columns_;
  if (offsets_.size() <= kept) return;
  bytes_.resize(offsets_[kept]);
  offsets_.resize(kept);
}

void RowBlock::Pack() {
  bytes_.shrink_to_fit();
  offsets_.shrink_to_fit();
}

std::string_view RowBlock::Raw(std::size_t row, std::size_t column) const {
  if (row >= rows_ || column >= columns_) throw RuntimeError(RuntimeErrorNumber::kSubscript);
  const std::size_t cell = row * columns_ + column;
  const std::size_t begin = offsets_[cell];
  const std::size_t end = cell + 1 < offsets_.size() ? offsets_[cell + 1] : bytes_.size();
  return std::string_view(bytes_).substr(begin, end - begin);
}

namespace {

template <class T>
Variant ValueIn(std::string_view raw) {
  T value;
  std::memcpy(&value, raw.data() + 1, sizeof(T));
  return Variant(value);
}

}  // namespace

Variant RowBlock::Cell(std::size_t row, std::size_t column) const {
  const std::string_view raw = Raw(row, column);
  switch (static_cast<VariantKind>(raw.front())) {
    case VariantKind::kInt32: return ValueIn<std::int32_t>(raw);
    case VariantKind::kDouble: return ValueIn<double>(raw);
    case VariantKind::kDecimal: return ValueIn<Decimal>(raw);
    case VariantKind::kDate: return ValueIn<Date>(raw);
    case VariantKind::kString: return Variant(raw.substr(1));
    default: return Variant(Null{});
  }
}

}  // namespace sabrel
