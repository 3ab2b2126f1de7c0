// How the operations' results become output and exit statuses.
//
// An operation that sends a query tells a failure through the error object and returns some default
// all the same: that is no answer, and `Context::Run` reports the failure.
#pragma once

#include <string>
#include <vector>

#include "cli/context.h"

namespace sabrel::cli {

/// Whether the error object holds a failure of this command.
[[nodiscard]] bool HasFailed();

// Each prints nothing and returns kFailed after a failure.
int PrintAnswer(Context& context, const Variant& value);
int PrintTruthAnswer(Context& context, bool truth);

/// Rows under column names, in the form that was asked for.
void PrintTable(Context& context, const std::vector<std::string>& columns,
                const std::vector<std::vector<Variant>>& rows);
/// A truth value as a cell: yes or no for a person.
[[nodiscard]] Variant TruthCell(const Context& context, bool truth);

/// Behind operations that take a failure for an answer: a cancelled statement is none.
/// Errors: OutputCancelled
void RequireNotCancelled(Context& context);

}  // namespace sabrel::cli
