// SPDX-License-Identifier: Apache-2.0
#include "venue/base/input_text.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "adapters/json/real_number.h"

namespace halvora {

namespace {

namespace fs = std::filesystem;

std::string joined(const std::vector<std::string>& names) {
  std::string path;
  for (const std::string& name : names) path += "/" + name;
  return path.empty() ? "/" : path;
}

}  // namespace

std::optional<std::uint64_t> decimal(std::string_view text, std::uint64_t largest) {
  std::uint64_t value = 0;
  if (text.empty()) return std::nullopt;
  for (const char character : text) {
    if (character < '0' || character > '9') return std::nullopt;
    const auto digit = static_cast<std::uint64_t>(character - '0');
    if (digit > largest || value > (largest - digit) / 10) return std::nullopt;
    value = value * 10 + digit;
  }
  return value;
}

std::optional<std::int64_t> wholeNumber(std::string_view text) {
  const bool isNegative = text.starts_with('-');
  const auto size = decimal(text.substr(isNegative ? 1 : 0), INT64_MAX);
  if (!size) return std::nullopt;
  const auto value = static_cast<std::int64_t>(*size);
  return isNegative ? -value : value;
}

std::optional<double> plainNumber(const std::string& text) {
  std::string_view rest = text;
  const auto skip = [&rest](std::string_view any) {
    const bool isThere = !rest.empty() && any.find(rest.front()) != std::string_view::npos;
    if (isThere) rest.remove_prefix(1);
    return isThere;
  };
  const auto skipDigits = [&rest] {
    const std::size_t count = std::min(rest.find_first_not_of("0123456789"), rest.size());
    rest.remove_prefix(count);
    return count;
  };
  skip("-");
  std::size_t digits = skipDigits();
  if (skip(".")) digits += skipDigits();
  if (digits > 0 && skip("eE")) {
    skip("+-");
    digits = skipDigits();
  }
  return digits > 0 && rest.empty() ? std::optional(realNumber(text)) : std::nullopt;
}

std::string absolutePath(std::string_view path) {
  if (path.empty()) return {};
  std::error_code error;
  const std::string whole = path.front() == '/'
                                ? std::string(path)
                                : fs::current_path(error).string() + "/" + std::string(path);
  std::vector<std::string> names;
  for (std::size_t at = 0; at < whole.size();) {
    const std::size_t end = std::min(whole.find('/', at), whole.size());
    std::string name = whole.substr(at, end - at);
    at = end + 1;
    if (name.empty() || name == ".") continue;
    const bool isPlainUp =
        name == ".." &&
        (names.empty() || (names.back() != ".." && !fs::is_symlink(joined(names), error)));
    if (!isPlainUp) {
      names.push_back(std::move(name));
    } else if (!names.empty()) {
      names.pop_back();
    }
  }
  return joined(names);
}

bool mayBeFolder(const std::string& path) {
  std::error_code error;
  return !path.empty() && (!fs::exists(path, error) || fs::is_directory(path, error));
}

}  // namespace halvora
