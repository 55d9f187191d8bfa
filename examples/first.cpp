// Opens an Access database (making it when there is none), changes it and prints it.

#include <iostream>

#include "jet/dao/dao.h"

int main(int argc, char** argv) {
  if (argc != 2) return std::cerr << "first FILE.mdb\n", 2;
  try {
    jet::Workspace workspace;
    const bool fresh = !std::filesystem::exists(argv[1]);
    const auto db = fresh ? workspace.createDatabase(argv[1], jet::kPolishLocale) : workspace.openDatabase(argv[1]);
    if (fresh) db->execute(u"CREATE TABLE goscie (id COUNTER PRIMARY KEY, imie TEXT(50) NOT NULL, kiedy DATETIME)");

    const auto guests = db->openRecordset(u"SELECT * FROM goscie WHERE id = 0");
    guests->addNew();
    guests->field(u"imie").setValue(jet::Value(u"Żaneta"));
    guests->update();
    db->execute(u"UPDATE goscie SET kiedy = Now() WHERE kiedy Is Null");

    const auto all = db->openRecordset(u"SELECT imie, Count(*) AS razy FROM goscie GROUP BY imie");
    for (; !all->eof(); all->moveNext())
      std::cout << jet::toUtf8(all->value(u"imie").get<jet::Text>()) << ": " << all->value(u"razy").get<int32_t>() << "\n";
  } catch (const jet::Error& error) {
    return std::cerr << error.what() << "\n", 1;
  }
}
