#include "fuzz/target.h"

#include <stdlib.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "sabrel/platform/conversions.h"

namespace sabrel::fuzz {
namespace {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = std::filesystem::temp_directory_path() / "sabrel-fuzz-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) Fail("has a temporary folder", pattern);
    path_ = pattern;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  [[nodiscard]] std::string Path(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

Decimal TakeDecimal(Input& input) {
  std::string text = input.Choice(2) == 0 ? "" : "-";
  text += std::to_string(input.Bits(8)) + std::to_string(input.Byte());
  return Decimal::Parse(text + "E-" + std::to_string(input.Choice(29)));
}

}  // namespace

void Fail(std::string_view promise, std::string_view seen) {
  std::fprintf(stderr, "\nBroken: %.*s\nSeen: %.*s\n", static_cast<int>(promise.size()),
               promise.data(), static_cast<int>(seen.size()), seen.data());
  std::abort();
}

std::uint8_t Input::Byte() {
  if (rest_.empty()) return 0;
  const auto byte = static_cast<std::uint8_t>(rest_.front());
  rest_.remove_prefix(1);
  return byte;
}

std::uint64_t Input::Bits(int bytes) {
  std::uint64_t bits = 0;
  for (int i = 0; i < bytes; ++i) bits |= std::uint64_t{Byte()} << (8 * i);
  return bits;
}

std::string_view Input::Text() {
  const std::string_view text = rest_.substr(0, Byte() + std::size_t{1});
  if (text.empty()) return {};
  rest_.remove_prefix(text.size() - 1);
  return text.substr(1);
}

Variant Input::Value() {
  switch (Choice(14)) {
    case 0: return {};
    case 1: return Variant(Null{});
    case 2: return Variant(Byte());
    case 3: return Variant(static_cast<std::int16_t>(Bits(2)));
    case 4: return Variant(static_cast<std::int32_t>(Bits(4)));
    case 5: return Variant(std::bit_cast<float>(static_cast<std::uint32_t>(Bits(4))));
    case 6: return Variant(std::bit_cast<double>(Bits(8)));
    case 7: return Variant(Currency{static_cast<std::int64_t>(Bits(8))});
    case 8: return Variant(TakeDecimal(*this));
    case 9: return Variant(Date(std::bit_cast<double>(Bits(8))));
    case 10: return Variant(Byte() % 2 == 0);
    case 11: return Variant(ErrorValue{static_cast<std::int32_t>(Bits(4))});
    // Dates and numbers that are likely, which random bits are not.
    case 12:
      return Variant(Date(static_cast<double>(static_cast<std::int32_t>(Bits(3)) - 700000) +
                          static_cast<double>(Bits(3)) / 86400.0));
    default: return Variant(Text());
  }
}

std::string Shown(const Variant& value) {
  const std::string kind = "kind " + std::to_string(static_cast<int>(value.kind())) + ": ";
  if (const auto* number = value.GetIf<double>()) return kind + NumberText(*number, 17, ".");
  if (const auto* date = value.GetIf<Date>()) return kind + NumberText(date->Serial(), 17, ".");
  if (value.IsNull() || value.kind() == VariantKind::kArray) return kind;
  return kind + ToText(value, LocaleFacts{});
}

bool Same(const Variant& a, const Variant& b) {
  if (a.kind() != b.kind()) return false;
  switch (a.kind()) {
    case VariantKind::kSingle:
      if (std::isnan(a.Get<float>())) return std::isnan(b.Get<float>());
      break;
    case VariantKind::kDouble:
      if (std::isnan(a.Get<double>())) return std::isnan(b.Get<double>());
      break;
    case VariantKind::kDate:
      if (std::isnan(a.Get<Date>().Serial())) return std::isnan(b.Get<Date>().Serial());
      break;
    case VariantKind::kDecimal: return a.Get<Decimal>().Text() == b.Get<Decimal>().Text();
    default: break;
  }
  return a == b;
}

std::string TemporaryPath(const std::string& name) {
  static const TemporaryFolder folder;
  return folder.Path(name);
}

}  // namespace sabrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  sabrel::fuzz::Check({reinterpret_cast<const char*>(data), size});
  return 0;
}
