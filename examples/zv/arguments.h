// The words of a command line, taken one after the other, and their values.
#pragma once

#include <span>
#include <string>
#include <vector>
#include <windows.h>

namespace zv {

/// Words are taken from the front. Whatever cannot be understood throws a UsageError that names the word.
class Arguments {
 public:
  explicit Arguments(std::vector<std::string> words) : words_(std::move(words)) {}

  [[nodiscard]] bool empty() const { return next_ == words_.size(); }
  /// Takes the next word when it is exactly this one.
  bool skip(const std::string& word);
  /// Takes the word out wherever it stands.
  bool remove(const std::string& word);
  /// Takes the next word if it is an option ("--..."), else gives an empty string.
  std::string takeOption();
  /// Takes a word that must be there and is no option: a file, say.
  std::string takeOperand(const std::string& what);
  /// Takes the value that must follow an option.
  std::string takeValue(const std::string& option);
  /// Nothing may be left.
  void finish() const;

 private:
  std::vector<std::string> words_;
  size_t next_ = 0;
};

/// A size as given: a side of 0 follows from the other one; with a percentage both do.
struct SizeArgument {
  int width = 0;
  int height = 0;
  int percent = 0;

  /// The size meant for a picture of this size; no side is below 1.
  [[nodiscard]] SIZE resolve(int currentWidth, int currentHeight) const;
};

/// A word and what it stands for; several words may stand for the same.
struct Choice {
  const char* word;
  int value;
};

int parseNumber(const std::string& option, const std::string& text, int lowest, int highest);
/// A number with up to two decimals, in hundredths.
int parseHundredths(const std::string& option, const std::string& text, int lowest, int highest);
/// "WxH", "Wx", "xH" or "P%".
SizeArgument parseSize(const std::string& option, const std::string& text);
/// "RRGGBB" in hexadecimal digits, with or without '#', or "index:N" for an entry of the palette.
COLORREF parseColor(const std::string& option, const std::string& text);
/// "A,B,...": at least `fewest` whole numbers.
std::vector<int> parseNumbers(const std::string& option, const std::string& text, size_t fewest);
int parseChoice(const std::string& option, const std::string& text, std::span<const Choice> choices);

}  // namespace zv
