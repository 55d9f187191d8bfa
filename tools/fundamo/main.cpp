// The structure tool: the only program that creates tables.

#include <cstdio>
#include <string>
#include <vector>

#include "jet/dao/dao.h"
#include "structure/create.h"

namespace {

constexpr char kUsage[] =
    "fundamo --create FILE [--password PW]   new database with the current structure\n"
    "fundamo --help | --version\n";

std::filesystem::path toPath(const std::string& utf8) {
  return std::filesystem::path(reinterpret_cast<const char8_t*>(utf8.c_str()));
}

int create(const std::string& file, const std::string& password) {
  try {
    structure::createDatabase(toPath(file), jet::fromUtf8(password));
    return 0;
  } catch (const jet::Error& error) {
    std::fprintf(stderr, "error %s\n", error.what());
    return 1;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.size() == 1 && words[0] == "--help") return std::fputs(kUsage, stdout), 0;
  if (words.size() == 1 && words[0] == "--version") return std::puts("fundamo " TANDEKO_VERSION), 0;
  if (words.size() == 2 && words[0] == "--create") return create(words[1], {});
  if (words.size() == 4 && words[0] == "--create" && words[2] == "--password") return create(words[1], words[3]);
  return std::fputs(kUsage, stderr), 2;
}
