#include "jet/format/error.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "jet/format/text.h"

namespace jet {

namespace {

struct Entry {
  int number;
  std::u16string_view text;
};

// Ascending. |1, |2, |3 are places for names; a bare | takes the next name in order. The small numbers are
// those of expression evaluation, the others the engine's own.
constexpr Entry kTexts[] = {
    {5, u"Invalid procedure call."},
    {6, u"Overflow."},
    {11, u"Division by zero."},
    {13, u"Type mismatch."},
    {94, u"Invalid use of Null."},
    {3000, u"Reserved error (|); there is no message for this error."},
    {3001, u"Invalid argument."},
    {3002, u"Couldn't start session."},
    {3003, u"Couldn't start transaction; too many transactions already nested."},
    {3004, u"Couldn't find database '|'."},
    {3005, u"'|' isn't a valid database name."},
    {3006, u"Database '|' is exclusively locked."},
    {3008, u"Table '|' is exclusively locked."},
    {3009, u"Couldn't lock table '|'; currently in use."},
    {3010, u"Table '|' already exists."},
    {3011, u"Couldn't find object '|'."},
    {3012, u"Object '|' already exists."},
    {3014, u"Can't open any more tables."},
    {3015, u"'|' isn't an index in this table."},
    {3016, u"Field won't fit in record."},
    {3017, u"The size of a field is too long."},
    {3018, u"Couldn't find field '|'."},
    {3019, u"Operation invalid without a current index."},
    {3020, u"Update or CancelUpdate without AddNew or Edit."},
    {3021, u"No current record."},
    {3022,
     u"The changes you requested to the table were not successful because they would "
     u"create duplicate values in the index, primary key, or relationship."},
    {3023, u"AddNew or Edit already used."},
    {3024, u"Couldn't find file '|'."},
    {3025, u"Can't open any more files."},
    {3026, u"Not enough space on disk."},
    {3027, u"Can't update. Database or object is read-only."},
    {3029, u"Not a valid account name or password."},
    {3031, u"Not a valid password."},
    {3032, u"Can't perform this operation."},
    {3033, u"No permission for '|'."},
    {3034, u"Commit or Rollback without BeginTrans."},
    {3036, u"Database has reached maximum size."},
    {3039, u"Couldn't create index; too many indexes already defined."},
    {3040, u"Disk I/O error during read."},
    {3041, u"Can't open a database created with a previous version of your application."},
    {3043, u"Disk or network error."},
    {3044, u"'|' isn't a valid path."},
    {3045, u"Couldn't use '|'; file already in use."},
    {3046, u"Couldn't save; currently locked by another user."},
    {3047, u"Record is too large."},
    {3048, u"Can't open any more databases."},
    {3049,
     u"Can't open database '|'. It may not be a database that your application "
     u"recognizes, or the file may be corrupt."},
    {3050, u"Couldn't lock file."},
    {3051,
     u"The database engine cannot open or write to the file '|'. It is already opened "
     u"exclusively by another user, or you need permission to view and write its data."},
    {3055, u"Not a valid file name."},
    {3056, u"Couldn't repair this database."},
    {3058, u"Index or primary key cannot contain a Null value."},
    {3059, u"Operation canceled by user."},
    {3060, u"Wrong data type for parameter '|'."},
    {3061, u"Too few parameters. Expected |."},
    {3062, u"Duplicate output alias '|'."},
    {3063, u"Duplicate output destination '|'."},
    {3064, u"Can't open action query '|'."},
    {3065, u"Can't execute a non-action query."},
    {3067, u"Query input must contain at least one table or query."},
    {3070, u"Can't bind name '|'."},
    {3071, u"Can't evaluate expression (too complex or wrongly typed)."},
    {3073, u"Operation must use an updateable query."},
    {3074, u"Can't repeat table name '|' in FROM clause."},
    {3075, u"|1 in query expression '|2'."},
    {3076, u"| in criteria expression."},
    {3077, u"| in expression."},
    {3078,
     u"The database engine cannot find the input table or query '|'. Make sure it "
     u"exists and that its name is spelled correctly."},
    {3079, u"Ambiguous field reference '|'."},
    {3080, u"Joined table '|' not listed in FROM clause."},
    {3081, u"Can't join more than one table with the same name (|)."},
    {3082, u"JOIN operation '|' refers to a non-joined table."},
    {3085, u"Undefined function '|' in expression."},
    {3086, u"Couldn't delete from specified tables."},
    {3093, u"ORDER BY clause (|) conflicts with DISTINCT."},
    {3094, u"ORDER BY clause (|) conflicts with GROUP BY clause."},
    {3095, u"Can't have aggregate function in expression (|)."},
    {3096, u"Can't have aggregate function in WHERE clause (|)."},
    {3097, u"Can't have aggregate function in ORDER BY clause (|)."},
    {3098, u"Can't have aggregate function in GROUP BY clause (|)."},
    {3099, u"Can't have aggregate function in JOIN operation (|)."},
    {3101, u"There is no record in table '|2' with key matching field(s) '|1'."},
    {3102, u"Circular reference caused by '|'."},
    {3103, u"Circular reference caused by alias '|' in query definition's SELECT list."},
    {3107, u"Record(s) can't be added; no Insert Data permission on '|'."},
    {3108, u"Record(s) can't be edited; no Update Data permission on '|'."},
    {3109, u"Record(s) can't be deleted; no Delete Data permission on '|'."},
    {3110, u"Couldn't read definitions; no Read Design permission for '|'."},
    {3111, u"Couldn't create; no Create permission for '|'."},
    {3112, u"Record(s) can't be read; no Read Data permission on '|'."},
    {3113, u"Can't update '|'; field not updatable."},
    {3114, u"Memo or OLE object not allowed in unique values (|)."},
    {3115, u"Memo or OLE object not allowed in aggregate argument (|)."},
    {3117, u"Memo or OLE object not allowed in sort (|)."},
    {3118, u"Memo or OLE object not allowed in join (|)."},
    {3119, u"Memo or OLE object not allowed in group (|)."},
    {3121, u"Can't group on fields selected with '*'."},
    {3122,
     u"You tried to execute a query that does not include the specified expression '|' "
     u"as part of an aggregate function."},
    {3125, u"'|' isn't a valid name."},
    {3126, u"Invalid bracketing of name '|'."},
    {3127, u"INSERT INTO statement contains unknown field name '|'."},
    {3128, u"Must specify tables to delete from."},
    {3129, u"Invalid SQL statement; expected 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT', or 'UPDATE'."},
    {3130, u"Syntax error in DELETE statement."},
    {3131, u"Syntax error in FROM clause."},
    {3132, u"Syntax error in GROUP BY clause."},
    {3133, u"Syntax error in HAVING clause."},
    {3134, u"Syntax error in INSERT INTO statement."},
    {3135, u"Syntax error in JOIN operation."},
    {3137, u"Missing semicolon (;) at end of SQL statement."},
    {3138, u"Syntax error in ORDER BY clause."},
    {3139, u"Syntax error in PARAMETER clause."},
    {3140, u"Syntax error in PROCEDURE clause."},
    {3141,
     u"The SELECT statement includes a reserved word or an argument name that is "
     u"misspelled or missing, or the punctuation is incorrect."},
    {3142, u"Characters found after end of SQL statement."},
    {3144, u"Syntax error in UPDATE statement."},
    {3145, u"Syntax error in WHERE clause."},
    {3146, u"ODBC--call failed."},
    {3151, u"ODBC--connection to '|' failed."},
    {3155, u"ODBC--insert failed on attached (linked) table '|'."},
    {3156, u"ODBC--delete failed on attached (linked) table '|'."},
    {3157, u"ODBC--update failed on attached (linked) table '|'."},
    {3158, u"Couldn't save record; currently locked by another user."},
    {3159, u"Not a valid bookmark."},
    {3162, u"Null is invalid."},
    {3163, u"The field is too small to accept the amount of data you attempted to add."},
    {3164, u"Field can't be updated."},
    {3167, u"Record is deleted."},
    {3170, u"Couldn't find installable ISAM."},
    {3183, u"Not enough space on temporary disk."},
    {3186, u"Couldn't save; currently locked by user '|2' on machine '|1'."},
    {3187, u"Couldn't read; currently locked by user '|2' on machine '|1'."},
    {3188, u"Couldn't update; currently locked by another session on this machine."},
    {3189, u"Table '|1' is exclusively locked by user '|3' on machine '|2'."},
    {3190, u"Too many fields defined."},
    {3191, u"Can't define field more than once."},
    {3192, u"Couldn't find output table '|'."},
    {3196, u"Couldn't use '|'; database already in use."},
    {3197,
     u"Data has changed; operation stopped. Another user is attempting to change the "
     u"same data at the same time."},
    {3200, u"The record cannot be deleted or changed because table '|' includes related records."},
    {3201, u"You cannot add or change a record because a related record is required in table '|'."},
    {3202, u"Couldn't save; currently locked by another user."},
    {3204, u"Database already exists."},
    {3206, u"Can't create a relationship between a field and itself."},
    {3211, u"Couldn't lock table '|'; currently in use."},
    {3212, u"Couldn't lock table '|1'; currently in use by user '|3' on machine '|2'."},
    {3218, u"Couldn't update; currently locked."},
    {3219, u"Invalid operation."},
    {3239, u"Too many active users."},
    {3246, u"Operation not supported in transactions."},
    {3251, u"Operation is not supported for this type of object."},
    {3258, u"Query contains ambiguous outer joins."},
    {3259, u"Invalid field data type."},
    {3260, u"Couldn't update; currently locked by user '|2' on machine '|1'."},
    {3261, u"Table '|1' is exclusively locked by user '|3' on machine '|2'."},
    {3262, u"Couldn't lock table '|1'; currently in use by user '|3' on machine '|2'."},
    {3264, u"No fields defined - cannot append TableDef or Index."},
    {3265, u"Item not found in this collection."},
    {3266, u"Can't append. Field is part of a TableDefs collection."},
    {3270, u"Property not found."},
    {3271, u"Invalid property value."},
    {3277, u"Can't have more than 10 fields in an index."},
    {3280, u"Can't delete a field that is part of an index or is needed by the system."},
    {3281, u"Can't delete this index. It is either the current index or is used in a relationship."},
    {3283, u"Primary key already exists."},
    {3284, u"Index already exists."},
    {3285, u"Invalid index definition."},
    {3287, u"Can't create index on the given field."},
    {3289, u"Syntax error in CONSTRAINT clause."},
    {3290, u"Syntax error in CREATE TABLE statement."},
    {3291, u"Syntax error in CREATE INDEX statement."},
    {3292, u"Syntax error in field definition."},
    {3293, u"Syntax error in ALTER TABLE statement."},
    {3294, u"Syntax error in DROP INDEX statement."},
    {3295, u"Syntax error in DROP TABLE or DROP INDEX."},
    {3296, u"Join expression not supported."},
    {3303, u"Can't delete this field. It's part of one or more relationships."},
    {3306, u"At most one field can be returned from a subquery that doesn't use the EXISTS keyword."},
    {3307, u"The number of columns in the two selected tables or queries of a union query don't match."},
    {3308, u"Invalid TOP argument in select query."},
    {3314,
     u"Field '|' can't contain a null value because the Required property for this "
     u"field is set to True."},
    {3315, u"Field '|' can't be a zero-length string."},
    {3316, u"|"},
    {3317, u"One or more values entered is prohibited by the validation rule '|2' set for '|1'."},
    {3319, u"Syntax error in union query."},
    {3320, u"| in table-level validation expression."},
    {3326, u"This Recordset is not updatable."},
    {3327, u"Field '|' is based on an expression and can't be edited."},
    {3340, u"Query '|' is corrupt."},
    {3343, u"Unrecognized database format '|'."},
    {3346, u"Number of query values and destination fields aren't the same."},
    {3349, u"Numeric field overflow."},
    {3350, u"Object is invalid for operation."},
    {3351, u"ORDER BY expression (|) uses fields that are not in the query output."},
    {3354, u"At most one record can be returned by this subquery."},
    {3355, u"Syntax error in default value."},
    {3356, u"The database is opened by user '|2' on machine '|1' (exclusively)."},
    {3360, u"Query is too complex."},
    {3361, u"Unions not allowed in a subquery."},
    {3364, u"Can't use Memo or OLE object field '|' in SELECT clause of a union query."},
    {3366, u"Can't append a relation with no fields defined."},
    {3367, u"Can't append. Object already in collection."},
    {3368, u"Relationship must be on the same number of fields with the same data types."},
    {3369, u"Can't find field in index definition."},
    {3370, u"Can't modify the design of table '|'. It's in a read-only database."},
    {3371, u"Can't find table or constraint."},
    {3372, u"No such index '|2' on table '|1'."},
    {3373, u"Can't create relationship. Referenced table '|' doesn't have a primary key."},
    {3374, u"Can't create relationship. The specified fields are not uniquely indexed in table '|'."},
    {3375, u"Table '|1' already has an index named '|2'."},
    {3376, u"Table '|' doesn't exist."},
    {3377, u"No such relationship '|2' on table '|1'."},
    {3378, u"There is already a relationship named '|' in the current database."},
    {3379,
     u"Can't create relationships to enforce referential integrity. Existing data in "
     u"table '|2' violates referential integrity rules with related table '|1'."},
    {3380, u"Field '|2' already exists in table '|1'."},
    {3381, u"There is no field named '|2' in table '|1'."},
    {3382, u"The size of field '|' is too long."},
    {3393,
     u"Can't perform join, group, sort, or indexed restriction. A value being searched "
     u"or sorted on is too long."},
    {3396, u"Can't perform cascading operation: related records exist in '|'."},
    {3397, u"Can't perform cascading operation: there must be a related record in '|'."},
    {3398, u"Can't perform cascading operation: null key in '|'."},
    {3399, u"Can't perform cascading operation: duplicate key in '|'."},
    {3401, u"Can't perform cascading operation: field '|' would become null."},
    {3402, u"Can't perform cascading operation: field '|' would become a zero-length string."},
    {3404, u"Can't perform cascading operation: field '|' would break its validation rule."},
    {3405, u"Error '|' in validation rule."},
    {3409, u"Invalid field name '|' in definition of index or relationship."},
    {3411,
     u"Invalid entry. Can't perform cascading operation specified in table '|1' because"
     u" value entered is too big for field '|2'."},
    {3414, u"Can't perform cascading update on table '|' because it is currently in use."},
    {3415, u"Zero-length string is valid only in a text or Memo field."},
    {3420, u"Object is invalid or not set."},
    {3421, u"Data type conversion error."},
    {3422, u"Can't modify table structure. Another user has the table open."},
    {3428,
     u"The database engine has encountered a problem in your database. To correct the "
     u"problem, you must repair and compact the database."},
    {3464, u"Data type mismatch in criteria expression."},
    {3609, u"No unique index found for the referenced field of the primary table."},
    {3615, u"Type mismatch in JOIN expression."},
    {3622,
     u"You must use the dbSeeChanges option with OpenRecordset when accessing a SQL "
     u"Server table that has an IDENTITY column."},
    {3626, u"The operation failed. There are too many indexes on table '|'."},
    {3734,
     u"The database has been placed in a state by user '|' on machine '|' that prevents"
     u" it from being opened or locked."},
    {3800, u"'|' is not an index in this table."},
};

static_assert(std::is_sorted(std::begin(kTexts), std::end(kTexts),
                             [](const Entry& a, const Entry& b) { return a.number < b.number; }));

std::u16string decimal(unsigned long number) {
  const std::string digits = std::to_string(number);
  return std::u16string(digits.begin(), digits.end());
}

// A place without a name stays empty. Names are not looked at again: they may hold | themselves.
std::u16string fillPlaces(std::u16string_view text, std::initializer_list<std::u16string_view> names) {
  std::u16string filled;
  size_t inOrder = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != u'|') {
      filled += text[i];
      continue;
    }
    size_t name = inOrder;
    if (i + 1 < text.size() && text[i + 1] >= u'1' && text[i + 1] <= u'3')
      name = text[++i] - u'1';
    else
      ++inOrder;
    if (name < names.size()) filled += names.begin()[name];
  }
  return filled;
}

}  // namespace

std::u16string_view errorText(int number) {
  const auto found = std::lower_bound(std::begin(kTexts), std::end(kTexts), number,
                                      [](const Entry& entry, int wanted) { return entry.number < wanted; });
  return found != std::end(kTexts) && found->number == number ? found->text : std::u16string_view();
}

Error::Error(int number, std::initializer_list<std::u16string_view> names, std::string source)
    : number_(number), source_(std::move(source)) {
  const std::u16string_view text = errorText(number);
  description_ = text.empty() ? fillPlaces(errorText(3000), {decimal(static_cast<unsigned long>(number))})
                              : fillPlaces(text, names);
  what_ = std::to_string(number) + ": " + toUtf8(description_);
}

Error Error::withText(int number, std::u16string description, std::string source) {
  Error error;
  error.number_ = number;
  error.source_ = std::move(source);
  error.description_ = std::move(description);
  error.what_ = std::to_string(number) + ": " + toUtf8(error.description_);
  return error;
}

void throwDamaged(std::u16string_view what, unsigned page) {
  std::u16string text = u"The database is damaged: ";
  text += what;
  text += u" (page ";
  text += decimal(page);
  text += u").";
  throw Error::withText(page == 0 ? 3343 : 3049, std::move(text));
}

}  // namespace jet
