// What a call came to, as a number or text that a table can hold.
#pragma once

#include <string>

#include "sabrel/platform/runtime_error.h"

namespace sabrel::testing {

/// The failure of `action`; number 0 when there is none.
template <class Action>
RuntimeError FailureIn(Action action) {
  try {
    static_cast<void>(action());
  } catch (const RuntimeError& failure) {
    return failure;
  }
  return {0, {}, {}};
}

template <class Action>
std::int32_t NumberOf(Action action) {
  return FailureIn(action).Number();
}

inline const std::string& AsText(const std::string& text) { return text; }
template <class Number>
std::string AsText(Number number) {
  return std::to_string(number);
}

/// The text or number that `make` gives, "!n" for failure n.
template <class Make>
std::string Outcome(Make make) {
  std::string shown;
  const std::int32_t number = NumberOf([&] { return shown = AsText(make()); });
  return number == 0 ? shown : "!" + std::to_string(number);
}

/// What `make` gives for each of `inputs`, each after a blank.
template <class Inputs, class Make>
std::string Outcomes(const Inputs& inputs, Make make) {
  std::string all;
  for (const auto& input : inputs) all += " " + Outcome([&] { return make(input); });
  return all;
}

}  // namespace sabrel::testing
