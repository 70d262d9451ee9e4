#include "arguments.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "common/errors.h"
#include "common/text.h"

namespace zv {

namespace {

bool isOption(const std::string& word) {
  return word.size() > 2 && word.starts_with("--");
}

/// Reads a whole number from the start of `text` and moves past it.
bool readNumber(std::string_view* text, int* number) {
  const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), *number);
  if (error != std::errc()) return false;
  text->remove_prefix(static_cast<size_t>(end - text->data()));
  return true;
}

[[noreturn]] void reject(const std::string& option, const std::string& text, const std::string& wanted) {
  throw UsageError(option + " takes " + wanted + ", not '" + text + "'");
}

int scaled(int side, int numerator, int denominator) {
  const int64_t result = (int64_t{side} * numerator + denominator / 2) / denominator;
  return static_cast<int>(std::clamp<int64_t>(result, 1, INT32_MAX));
}

}  // namespace

bool Arguments::skip(const std::string& word) {
  if (empty() || words_[next_] != word) return false;
  next_++;
  return true;
}

bool Arguments::remove(const std::string& word) {
  return std::erase(words_, word) != 0;
}

std::string Arguments::takeOption() {
  if (empty() || !isOption(words_[next_])) return {};
  return words_[next_++];
}

std::string Arguments::takeOperand(const std::string& what) {
  if (empty()) throw UsageError(what + " is missing");
  if (isOption(words_[next_])) throw UsageError(what + " is missing before " + words_[next_]);
  return words_[next_++];
}

std::string Arguments::takeValue(const std::string& option) {
  if (empty() || isOption(words_[next_])) throw UsageError(option + " needs a value");
  return words_[next_++];
}

void Arguments::finish() const {
  if (empty()) return;
  throw UsageError((isOption(words_[next_]) ? "unknown option " : "one word too many: ") + words_[next_]);
}

SIZE SizeArgument::resolve(int currentWidth, int currentHeight) const {
  if (percent > 0) return {scaled(currentWidth, percent, 100), scaled(currentHeight, percent, 100)};
  if (width == 0) return {scaled(currentWidth, height, currentHeight), height};
  if (height == 0) return {width, scaled(currentHeight, width, currentWidth)};
  return {width, height};
}

int parseNumber(const std::string& option, const std::string& text, int lowest, int highest) {
  std::string_view rest = text;
  int number = 0;
  if (!readNumber(&rest, &number) || !rest.empty() || number < lowest || number > highest)
    reject(option, text, format("a number from %d to %d", lowest, highest));
  return number;
}

int parseHundredths(const std::string& option, const std::string& text, int lowest, int highest) {
  std::string_view rest = text;
  const bool negative = rest.starts_with('-');
  if (negative) rest.remove_prefix(1);
  int64_t value = 0;
  bool valid = !rest.empty() && rest.front() >= '0' && rest.front() <= '9';
  int whole = 0;
  if (valid) valid = readNumber(&rest, &whole);
  value = int64_t{whole} * 100;
  if (valid && rest.starts_with('.')) {
    rest.remove_prefix(1);
    for (int place = 10; place > 0 && !rest.empty() && rest.front() >= '0' && rest.front() <= '9'; place /= 10) {
      value += int64_t{rest.front() - '0'} * place;
      rest.remove_prefix(1);
    }
  }
  if (negative) value = -value;
  if (!valid || !rest.empty() || value < lowest || value > highest)
    reject(option, text, format("a number from %d to %d with at most two decimals", lowest / 100, highest / 100));
  return static_cast<int>(value);
}

SizeArgument parseSize(const std::string& option, const std::string& text) {
  SizeArgument size;
  std::string_view rest = text;
  bool valid = true;
  if (text.ends_with('%')) {
    valid = readNumber(&rest, &size.percent) && rest == "%" && size.percent > 0;
  } else {
    if (!rest.starts_with('x')) valid = readNumber(&rest, &size.width) && size.width > 0;
    valid = valid && rest.starts_with('x');
    if (valid) rest.remove_prefix(1);
    if (!rest.empty()) valid = valid && readNumber(&rest, &size.height) && size.height > 0 && rest.empty();
    valid = valid && (size.width > 0 || size.height > 0);
  }
  if (!valid) reject(option, text, "a size (WxH, Wx, xH or P%)");
  return size;
}

COLORREF parseColor(const std::string& option, const std::string& text) {
  constexpr std::string_view indexPrefix = "index:";
  if (text.starts_with(indexPrefix))
    return 0x1000000u | static_cast<COLORREF>(parseNumber(option, text.substr(indexPrefix.size()), 0, 255));
  const std::string_view digits = std::string_view(text).substr(text.starts_with('#') ? 1 : 0);
  unsigned value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (digits.size() != 6 || error != std::errc() || end != digits.data() + digits.size())
    reject(option, text, "a colour (RRGGBB or index:N)");
  return RGB(value >> 16, (value >> 8) & 0xFF, value & 0xFF);
}

std::vector<int> parseNumbers(const std::string& option, const std::string& text, size_t fewest) {
  std::vector<int> numbers;
  std::string_view rest = text;
  bool valid = true;
  do {
    if (!numbers.empty()) rest.remove_prefix(1);
    valid = readNumber(&rest, &numbers.emplace_back());
  } while (valid && rest.starts_with(','));
  if (!valid || !rest.empty() || numbers.size() < fewest)
    reject(option, text, format("at least %u whole numbers with commas between", static_cast<unsigned>(fewest)));
  return numbers;
}

int parseChoice(const std::string& option, const std::string& text, std::span<const Choice> choices) {
  for (const Choice& choice : choices)
    if (text == choice.word) return choice.value;
  std::string words;
  for (const Choice& choice : choices) words += (words.empty() ? "" : ", ") + std::string(choice.word);
  reject(option, text, "one of " + words);
}

}  // namespace zv
