#include "sabrel/platform/recordset.h"

#include <limits>
#include <utility>

#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

DataServerAddress AddressOf(std::string_view host, std::int32_t port, std::string_view user,
                            std::string_view password, std::int32_t timeout_s) {
  return {std::string(host), port, std::string(user), std::string(password), timeout_s};
}

}  // namespace

void Recordset::Open(std::string_view sql, std::string_view host, std::int32_t port,
                     std::string_view user, std::string_view password, std::int32_t timeout_s) {
  Close();
  try {
    cursor_ = Deref(link_).Query(sql, AddressOf(host, port, user, password, timeout_s));
    names_ = Deref(cursor_).ColumnNames();
    std::size_t bytes = 0;
    while (cursor_ && bytes < kOpenBytes) {
      ReadBlock();
      if (!blocks_.empty()) bytes += blocks_.back().Bytes();
    }
  } catch (...) {
    const RuntimeError failure = CurrentFailure();
    Close();
    throw failure;
  }
  open_ = true;
}

std::int64_t Recordset::Execute(std::string_view sql, std::string_view host, std::int32_t port,
                                std::string_view user, std::string_view password,
                                std::int32_t timeout_s) {
  return RaisingRuntimeErrors(
      [&] { return Deref(link_).Execute(sql, AddressOf(host, port, user, password, timeout_s)); });
}

void Recordset::ReadBlock() {
  // A cursor that failed once must fail whoever moves next, never look like the end of the rows.
  if (failure_) throw RuntimeError(*failure_);
  try {
    RowBlock block(names_.size());
    const bool more = cursor_->Fetch(block, kBlockBytes);
    if (block.Rows() > 0) {
      block.Pack();
      rows_read_ += block.Rows();
      blocks_.push_back(std::move(block));
    }
    if (!more) cursor_.reset();
  } catch (...) {
    failure_ = CurrentFailure();
    throw RuntimeError(*failure_);
  }
}

std::int32_t Recordset::RecordCount() {
  RequireOpen();
  while (cursor_) ReadBlock();
  if (rows_read_ > std::numeric_limits<std::int32_t>::max()) {
    throw RuntimeError(RuntimeErrorNumber::kOverflow);
  }
  return static_cast<std::int32_t>(rows_read_);
}

bool Recordset::EndOfFile() const {
  RequireOpen();
  return blocks_.empty();
}

void Recordset::MoveNext() {
  RequireOpen();
  if (blocks_.empty()) throw RuntimeError(RuntimeErrorNumber::kNoCurrentRecord);
  // The next block is read before the last row is left: a failure then leaves the reader where it
  // was.
  const bool block_ends = row_in_block_ + 1 >= blocks_.front().Rows();
  if (block_ends) {
    while (cursor_ && blocks_.size() == 1) ReadBlock();
    blocks_.pop_front();
    row_in_block_ = 0;
  } else {
    ++row_in_block_;
  }
}

FieldList Recordset::Fields() const {
  RequireOpen();
  return FieldList(*this);
}

void Recordset::Close() noexcept {
  cursor_.reset();
  failure_.reset();
  names_.clear();
  blocks_.clear();
  row_in_block_ = 0;
  rows_read_ = 0;
  open_ = false;
}

void Recordset::RequireOpen() const {
  if (!open_) throw RuntimeError(RuntimeErrorNumber::kObjectClosed);
}

const RowBlock& Recordset::CurrentBlock() const {
  RequireOpen();
  if (blocks_.empty()) throw RuntimeError(RuntimeErrorNumber::kNoCurrentRecord);
  return blocks_.front();
}

std::int32_t FieldList::Count() const {
  recordset_->RequireOpen();
  return static_cast<std::int32_t>(recordset_->names_.size());
}

Field FieldList::Item(std::string_view name) const {
  recordset_->RequireOpen();
  for (std::size_t i = 0; i < recordset_->names_.size(); ++i) {
    if (EqualIgnoringCase(recordset_->names_[i], name)) return {*recordset_, i};
  }
  throw RaisingRuntimeErrors([&] {
    return RuntimeError(RuntimeErrorNumber::kNoSuchField,
                        "No such field in the record: " + std::string(name));
  });
}

Field FieldList::Item(std::int32_t ordinal) const {
  if (ordinal < 0 || ordinal >= Count()) throw RuntimeError(RuntimeErrorNumber::kNoSuchField);
  return {*recordset_, static_cast<std::size_t>(ordinal)};
}

std::size_t Field::Ordinal() const {
  // The recordset may have been opened anew with fewer columns.
  if (ordinal_ >= recordset_->names_.size()) throw RuntimeError(RuntimeErrorNumber::kNoSuchField);
  return ordinal_;
}

const std::string& Field::Name() const {
  recordset_->RequireOpen();
  return recordset_->names_[Ordinal()];
}

Variant Field::Value() const {
  return recordset_->CurrentBlock().Cell(recordset_->row_in_block_, Ordinal());
}

}  // namespace sabrel
