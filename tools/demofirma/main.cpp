// Fills a database with a believable firm, for trying the program out and for measuring it.

#include <charconv>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "console/console.h"
#include "firm.h"

namespace {

constexpr char kUsage[] =
    "demofirma FILE [--employees N] [--items N] [--registers N] [--seed S]\n"
    "    fills an existing, empty database of the current structure (fundamo --create makes one)\n"
    "demofirma --help | --version\n";

template <typename Number>
bool parseNumber(const std::string& text, Number low, Number high, Number& out) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), out);
  return error == std::errc{} && end == text.data() + text.size() && out >= low && out <= high;
}

struct Arguments {
  std::string file;
  FirmSize size;
};

std::optional<Arguments> parse(const std::vector<std::string>& words) {
  Arguments arguments;
  for (size_t i = 0; i < words.size(); ++i) {
    if (!words[i].starts_with("--")) {
      if (!arguments.file.empty()) return std::nullopt;
      arguments.file = words[i];
      continue;
    }
    if (i + 1 == words.size()) return std::nullopt;
    const std::string& option = words[i];
    const std::string& value = words[++i];
    const bool known =
        (option == "--employees" && parseNumber(value, 0, 100'000, arguments.size.employees)) ||
        (option == "--items" && parseNumber(value, 0, 2'000'000, arguments.size.items)) ||
        (option == "--registers" && parseNumber(value, 1, 1'000, arguments.size.registers)) ||
        (option == "--seed" && parseNumber(value, uint64_t{0}, UINT64_MAX, arguments.size.seed));
    if (!known) return std::nullopt;
  }
  if (arguments.file.empty()) return std::nullopt;
  return arguments;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words = commandLine(argc, argv);
  if (words.size() == 1 && words[0] == "--help") return std::fputs(kUsage, stdout), 0;
  if (words.size() == 1 && words[0] == "--version") return std::puts("demofirma " TANDEKO_VERSION), 0;
  const auto arguments = parse(words);
  if (!arguments) return std::fputs(kUsage, stderr), 2;
  try {
    jet::Workspace workspace;
    const auto database = workspace.openDatabase(toPath(arguments->file));
    fillFirm(workspace, *database, arguments->size);
    return 0;
  } catch (const std::exception& error) {
    print(std::string("error ") + error.what() + "\n", stderr);
    return 1;
  }
}
