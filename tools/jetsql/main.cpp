// SQL console over the engine: runs statements on a database file, or prints what the file holds.

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "console/console.h"
#include "jet/catalog/row_store.h"
#include "jet/dao/dao.h"
#include "jet/sql/engine.h"
#include "output.h"
#include "schema.h"

namespace {

constexpr char kUsage[] =
    "jetsql [--readonly] [--exclusive] [--password PW] [--format table|csv|tsv|jsonl] FILE [SQL ...]\n"
    "    runs each statement; without SQL reads them from standard input, separated by ';'\n"
    "jetsql [options] FILE --tables              names of the tables\n"
    "jetsql [options] FILE --schema [TABLE]      definitions of the tables\n"
    "jetsql [options] FILE --export TABLE        all rows of a table (csv unless told otherwise)\n"
    "jetsql [options] FILE --check               verifies the whole file\n"
    "jetsql [options] FILE --compact DEST        copies everything to a new file, packed\n"
    "jetsql FILE --repair                        saves what can still be read; prints what was lost\n"
    "jetsql --help | --version\n";

enum class Command { Run, Tables, Schema, Export, Check, Compact, Repair };

struct Arguments {
  jet::Workspace::OpenOptions open;
  std::optional<Format> format;
  Command command = Command::Run;
  std::string file;
  std::vector<std::string> texts;  // statements or a table's name
};

std::optional<Format> formatNamed(const std::string& name) {
  if (name == "table") return Format::Table;
  if (name == "csv") return Format::Csv;
  if (name == "tsv") return Format::Tsv;
  if (name == "jsonl") return Format::Jsonl;
  return std::nullopt;
}

std::optional<Command> commandNamed(const std::string& option) {
  if (option == "--tables") return Command::Tables;
  if (option == "--schema") return Command::Schema;
  if (option == "--export") return Command::Export;
  if (option == "--check") return Command::Check;
  if (option == "--compact") return Command::Compact;
  if (option == "--repair") return Command::Repair;
  return std::nullopt;
}

bool textsFit(const Arguments& arguments) {
  switch (arguments.command) {
    case Command::Run:
      return true;
    case Command::Tables:
    case Command::Check:
    case Command::Repair:
      return arguments.texts.empty();
    case Command::Schema:
      return arguments.texts.size() <= 1;
    case Command::Export:
    case Command::Compact:
      return arguments.texts.size() == 1;
  }
  return false;
}

// nullopt when the command line is not one of the usage.
std::optional<Arguments> parse(const std::vector<std::string>& words) {
  Arguments arguments;
  bool options = true;
  for (size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    const bool isOption = options && word.starts_with("--");
    if (!isOption) {
      if (arguments.file.empty())
        arguments.file = word;
      else
        arguments.texts.push_back(word);
    } else if (word == "--") {
      options = false;
    } else if (word == "--readonly") {
      arguments.open.readOnly = true;
    } else if (word == "--exclusive") {
      arguments.open.exclusive = true;
    } else if (word == "--password" && i + 1 < words.size()) {
      arguments.open.connect = u";pwd=" + jet::fromUtf8(words[++i]) + u";";
    } else if (word == "--format" && i + 1 < words.size()) {
      arguments.format = formatNamed(words[++i]);
      if (!arguments.format) return std::nullopt;
    } else if (const auto command = commandNamed(word); command && arguments.command == Command::Run) {
      arguments.command = *command;
    } else {
      return std::nullopt;
    }
  }
  if (arguments.file.empty() || !textsFit(arguments)) return std::nullopt;
  return arguments;
}

void run(jet::Database& database, const std::u16string& statement, Format format, Output& output) {
  if (database.isQuery(statement)) {
    const auto sink = makeSink(format, output);
    database.stream(statement, *sink);
    sink->end();
  } else {
    output.write(std::to_string(database.execute(statement)) + '\n');
  }
  output.flush();
}

void runAll(jet::Database& database, std::u16string_view text, Format format, Output& output) {
  jet::sql::Script script = jet::sql::splitScript(text);
  for (const auto& statement : script.statements) run(database, statement, format, output);
  if (script.rest.find_first_not_of(u" \t\r\n") != std::u16string::npos)
    run(database, script.rest, format, output);
}

// Each statement runs when its ';' has been read, so that a script can wait for its answer.
void runStandardInput(jet::Database& database, Format format, Output& output) {
  std::u16string pending;
  for (std::string line; readLine(line);) {
    pending += jet::fromUtf8(line) + u'\n';
    if (line.find(';') == std::string::npos) continue;
    jet::sql::Script script = jet::sql::splitScript(pending);
    for (const auto& statement : script.statements) run(database, statement, format, output);
    pending = std::move(script.rest);
  }
  runAll(database, pending, format, output);
}

std::u16string bracketed(const std::u16string& name) { return u'[' + name + u']'; }

void compact(const Arguments& arguments) {
  jet::CompactOptions options;
  options.connect = arguments.open.connect;
  jet::Workspace().compactDatabase(toPath(arguments.file), toPath(arguments.texts.front()), options);
}

void repair(const Arguments& arguments) {
  Output output;
  jet::Workspace().repairDatabase(toPath(arguments.file), [&output](const std::u16string& line) {
    output.write(jet::toUtf8(line) + '\n');
  });
}

// Not a fault, but the owner of the file should know.
void noteUnknownOrders(jet::Database& database, Output& output) {
  for (const auto& name : database.tableNames()) {
    const auto table = database.tableDef(name);
    const auto& indexes = table->realIndexes;
    if (std::all_of(indexes.begin(), indexes.end(),
                    [&](const auto& index) { return jet::isOrderKnown(*table, index); }))
      continue;
    output.write("note: table " + jet::toUtf8(name) +
                 ": the sort order of an index is not known; its rows can be read, but not changed\n");
  }
}

int perform(const Arguments& arguments) {
  if (arguments.command == Command::Compact) return compact(arguments), 0;
  if (arguments.command == Command::Repair) return repair(arguments), 0;
  jet::Workspace workspace;
  jet::Workspace::OpenOptions options = arguments.open;
  if (arguments.command != Command::Run) options.readOnly = true;
  const auto database = workspace.openDatabase(toPath(arguments.file), options);
  Output output;
  switch (arguments.command) {
    case Command::Run: {
      const Format format = arguments.format.value_or(Format::Table);
      if (arguments.texts.empty()) runStandardInput(*database, format, output);
      for (const std::string& text : arguments.texts) runAll(*database, jet::fromUtf8(text), format, output);
      return 0;
    }
    case Command::Tables:
      for (const auto& name : database->tableNames()) output.write(jet::toUtf8(name) + '\n');
      return 0;
    case Command::Schema: {
      const auto tables = arguments.texts.empty()
                              ? database->tableNames()
                              : std::vector<std::u16string>{jet::fromUtf8(arguments.texts.front())};
      for (const auto& table : tables) output.write(tableSchema(*database, table) + '\n');
      return 0;
    }
    case Command::Export: {
      const std::u16string table = database->tableDef(jet::fromUtf8(arguments.texts.front()))->name;
      run(*database, u"SELECT * FROM " + bracketed(table), arguments.format.value_or(Format::Csv), output);
      return 0;
    }
    case Command::Check: {
      const bool sound = database->check(
          [&output](const std::u16string& fault) { output.write(jet::toUtf8(fault) + '\n'); });
      if (sound) noteUnknownOrders(*database, output);
      return sound ? 0 : 1;
    }
    case Command::Compact:
    case Command::Repair:
      break;  // done above
  }
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  const std::vector<std::string> words = commandLine(argc, argv);
  if (words.size() == 1 && words[0] == "--help") return std::fputs(kUsage, stdout), 0;
  if (words.size() == 1 && words[0] == "--version") return std::puts("jetsql " TANDEKO_VERSION), 0;
  const auto arguments = parse(words);
  if (!arguments) return std::fputs(kUsage, stderr), 2;
  try {
    return perform(*arguments);
  } catch (const jet::Error& error) {
    print(std::string("error ") + error.what() + "\n", stderr);
  } catch (const std::exception& error) {
    print(std::string("error 3000: ") + error.what() + "\n", stderr);
  }
  return 1;
}
