#include "sabrel/platform/release_comparison.h"

#include <algorithm>

namespace sabrel {
namespace {

constexpr int kNoRelease = -2;

/// Hands out the dot-separated parts of a release; "0" once they are used up.
class PartReader {
 public:
  explicit PartReader(std::string_view release) : rest_(release) {}

  std::string_view Next() {
    if (done_) return "0";
    const std::size_t dot = std::min(rest_.find('.'), rest_.size());
    const std::string_view part = rest_.substr(0, dot);
    done_ = dot == rest_.size();
    if (!done_) rest_.remove_prefix(dot + 1);
    return part;
  }

 private:
  std::string_view rest_;
  bool done_ = false;
};

bool IsRelease(std::string_view release, int parts) {
  PartReader reader(release);
  // An empty text is no release even where no part is asked for.
  bool valid = !release.empty();
  for (int i = 0; valid && i < parts; ++i) {
    const std::string_view part = reader.Next();
    valid = !part.empty() && part.find_first_not_of("0123456789") == std::string_view::npos;
  }
  return valid;
}

int CompareNumbers(std::string_view a, std::string_view b) {
  a.remove_prefix(std::min(a.find_first_not_of('0'), a.size()));
  b.remove_prefix(std::min(b.find_first_not_of('0'), b.size()));
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  const int order = a.compare(b);
  return (order > 0) - (order < 0);
}

}  // namespace

int CompareReleases(std::string_view first, std::string_view second, int parts) noexcept {
  if (!IsRelease(first, parts)) return kNoRelease;
  PartReader left(first);
  PartReader right(IsRelease(second, parts) ? second : std::string_view("0"));
  for (int i = 0; i < parts; ++i) {
    if (const int order = CompareNumbers(left.Next(), right.Next()); order != 0) return order;
  }
  return 0;
}

}  // namespace sabrel
