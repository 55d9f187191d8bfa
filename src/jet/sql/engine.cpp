#include "jet/sql/engine.h"

#include <algorithm>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/sql/parser.h"
#include "jet/sql/statement.h"

namespace jet::sql {

namespace {

std::u16string_view trimmed(std::u16string_view text) {
  constexpr std::u16string_view kBlanks = u" \t\r\n;";
  const size_t begin = text.find_first_not_of(kBlanks);
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

bool isMakeTable(const ast::Query& q) {
  return !q.parts.empty() && q.parts[0].select && !q.parts[0].select->into.empty();
}

bool hasSubquery(const ast::Expr& e) {
  return e.query ||
         std::any_of(e.args.begin(), e.args.end(), [](const auto& arg) { return hasSubquery(*arg); });
}

using ParsedStatement = std::shared_ptr<const ast::Statement>;

// The rules evaluate as part of the running statement.
class RunningStatement {
 public:
  RunningStatement(Rules& rules, EvalContext& context) : rules_(rules), before_(rules.statement) {
    rules.statement = &context;
  }
  ~RunningStatement() { rules_.statement = before_; }
  RunningStatement(const RunningStatement&) = delete;
  RunningStatement& operator=(const RunningStatement&) = delete;

 private:
  Rules& rules_;
  EvalContext* before_;
};

class StoredResult : public ResultSet {
 public:
  StoredResult(std::vector<ResultColumn> columns, Collected rows)
      : columns_(std::move(columns)), rows_(std::move(rows)) {}
  const std::vector<ResultColumn>& columns() const override { return columns_; }
  size_t rowCount() const override { return rows_.order.size(); }
  Value value(size_t row, size_t column) const override {
    return rows_.store->value(rows_.order.at(row), column);
  }

 private:
  std::vector<ResultColumn> columns_;
  Collected rows_;
};

// Whether the text begins with the first word of a statement, and then cannot name a table or query.
bool beginsLikeStatement(std::u16string_view text) {
  static constexpr std::u16string_view kWords[] = {u"select", u"insert", u"update", u"delete", u"parameters",
                                                   u"transform", u"create", u"alter", u"drop"};
  const std::u16string word = foldName(text.substr(0, text.find_first_of(u" \t\r\n(*[")));
  return word.size() < text.size() && std::find(std::begin(kWords), std::end(kWords), word) != std::end(kWords);
}

// A query ready to run.
struct Prepared {
  EvalContext context;
  std::vector<std::unique_ptr<Slot>> slots;
  std::unique_ptr<Rows> rows;
};

}  // namespace

// The output columns of a dynaset, evaluated for one row at a time.
struct DynasetPlan::Outputs {
  std::u16string sql;
  Parameters parameters;
  bool isRowOnly = true;  // no subquery: nothing but the row matters
  Prepared prepared;
  Slot* slot = nullptr;
  SelectRows* select = nullptr;
};

struct Engine::Impl {
  explicit Impl(Catalog& c) : catalog(c), rules(c) {}

  // The last statement is kept: callers ask what it is before they run it, and often run it again.
  ParsedStatement parseStatement(std::u16string_view text) {
    if (!lastParsed || text != lastText) {
      lastParsed.reset();
      lastText = text;
      lastParsed = std::make_shared<const ast::Statement>(parse(text));
    }
    return lastParsed;
  }

  // A statement, or the name of a table or saved query.
  ParsedStatement parseSource(std::u16string_view text) {
    text = trimmed(text);
    if (beginsLikeStatement(text)) return parseStatement(text);
    std::u16string_view name = text;
    if (name.size() > 2 && name.front() == u'[' && name.back() == u']')
      name = name.substr(1, name.size() - 2);
    if (!name.empty() && name.size() <= kMaxNameLength) {
      if (catalog.table(name)) {
        ast::Statement s;
        ast::Query q;
        q.parts.emplace_back().select = std::make_unique<ast::Select>();
        ast::Select& select = *q.parts[0].select;
        select.items.emplace_back().star = true;
        select.from.push_back(std::make_unique<ast::Source>());
        select.from[0]->name = name;
        s.body = std::move(q);
        return std::make_shared<const ast::Statement>(std::move(s));
      }
      if (const auto sql = catalog.querySql(name)) return parseStatement(*sql);
      if (name.size() < text.size() || name.find_first_of(u" \t\r\n(;") == name.npos)
        throw Error(3078, {name}, "DAO.Database");
    }
    return parseStatement(text);
  }

  static const ast::Query& queryOf(const ast::Statement& s, std::u16string_view sql) {
    const auto* q = std::get_if<ast::Query>(&s.body);
    if (!q || isMakeTable(*q)) throw Error(3064, {trimmed(sql).substr(0, 200)}, "DAO.Database");
    return *q;
  }

  EvalContext context() {
    EvalContext c = currentContext(catalog);
    c.randomState = randomState;
    return c;
  }

  Prepared prepare(const ast::Statement& s, const ast::Query& q, const Parameters& parameters) {
    Prepared p;
    p.context = context();
    Binder binder(catalog, &rules, parameters, p.context);
    binder.declare(s.parameters);
    binder.lastAutoNumber = lastAutoNumber;
    p.rows = binder.query(q);
    binder.finish();
    p.slots = binder.takeSlots();
    return p;
  }

  Prepared prepare(std::u16string_view sql, const Parameters& parameters) {
    const ParsedStatement s = parseSource(sql);
    return prepare(*s, queryOf(*s, sql), parameters);
  }

  int64_t run(const ast::Statement& s, const Parameters& parameters, EvalContext& c);
  // The table of a query that shows its rows one by one; nullptr when it does not.
  TableDefPtr singleTable(const ast::Query& q);

  Catalog& catalog;
  Rules rules;
  int32_t lastAutoNumber = 0;
  uint64_t randomState = 0;
  std::u16string lastText;
  ParsedStatement lastParsed;
};

Engine::Engine(Catalog& catalog) : impl_(std::make_unique<Impl>(catalog)) {}
Engine::~Engine() = default;

RuleEvaluator& Engine::rules() { return impl_->rules; }
EvalContext Engine::context() const { return impl_->context(); }
int32_t Engine::lastAutoNumber() const { return impl_->lastAutoNumber; }

std::unique_ptr<ResultSet> Engine::query(std::u16string_view sql, const Parameters& parameters) {
  const ReadScope scope(impl_->catalog.pager());
  Prepared p = impl_->prepare(sql, parameters);
  Collected rows = collectRows(*p.rows, p.context);
  impl_->randomState = p.context.randomState;
  return std::make_unique<StoredResult>(p.rows->columns(), std::move(rows));
}

void Engine::query(std::u16string_view sql, RowSink& sink, const Parameters& parameters) {
  const ReadScope scope(impl_->catalog.pager());
  Prepared p = impl_->prepare(sql, parameters);
  Rows& rows = *p.rows;
  std::vector<Value> row(rows.columns().size());
  rows.open(p.context);
  sink.begin(rows.columns());
  while (rows.next(p.context)) {
    for (size_t i = 0; i < row.size(); ++i) row[i] = rows.take(i, p.context);
    if (!sink.row(row)) break;
  }
  impl_->randomState = p.context.randomState;
}

std::u16string Engine::explain(std::u16string_view sql, const Parameters& parameters) {
  const ReadScope scope(impl_->catalog.pager());
  const Prepared p = impl_->prepare(sql, parameters);
  PlanText text;
  p.rows->explain(text, 0);
  return text.text();
}

bool Engine::isQuery(std::u16string_view sql) {
  const ParsedStatement s = impl_->parseSource(sql);
  const auto* q = std::get_if<ast::Query>(&s->body);
  return q && !isMakeTable(*q);
}

// --- dynasets

TableDefPtr Engine::Impl::singleTable(const ast::Query& q) {
  if (q.crosstab || q.parts.size() != 1 || !q.parts[0].select) return nullptr;
  const ast::Select& s = *q.parts[0].select;
  if (s.distinct || !s.groupBy.empty() || s.having || s.from.size() != 1 ||
      s.from[0]->kind != ast::Source::Kind::Table)
    return nullptr;
  for (const auto& item : s.items)
    if (item.expr && hasAggregate(*item.expr)) return nullptr;
  for (const auto& order : q.orderBy)
    if (hasAggregate(*order.expr)) return nullptr;
  return catalog.table(s.from[0]->name);
}

std::optional<DynasetPlan> Engine::dynaset(std::u16string_view sql, const Parameters& parameters) {
  const ReadScope scope(impl_->catalog.pager());
  const ParsedStatement s = impl_->parseSource(sql);
  const auto& q = Impl::queryOf(*s, sql);
  DynasetPlan plan;
  plan.table = impl_->singleTable(q);
  if (!plan.table) return std::nullopt;
  Prepared p = impl_->prepare(*s, q, parameters);
  Slot& slot = *p.slots[0];
  plan.columns = p.rows->columns();

  auto* collected = dynamic_cast<CollectedRows*>(p.rows.get());
  if (collected && !collected->sort.empty()) {
    plan.rows = collected->rowIds(slot, p.context);
  } else {
    SelectRows& select = collected ? *collected->onlySelect : dynamic_cast<SelectRows&>(*p.rows);
    for (select.open(p.context); select.next(p.context);) plan.rows.push_back(slot.rowId());
    const auto& top = q.parts[0].select->top;  // TOP n is the select's own limit
    if (top && top->percent)
      plan.rows.resize((plan.rows.size() * static_cast<size_t>(top->count) + 99) / 100);
  }

  bool isRowOnly = true, hasExpressions = false;
  for (const auto& item : q.parts[0].select->items)
    if (item.expr && hasSubquery(*item.expr)) isRowOnly = false;
  for (const ResultColumn& column : plan.columns) {
    const int ordinal = column.sourceColumn.empty() ? -1 : plan.table->columnOrdinal(column.sourceColumn);
    hasExpressions = hasExpressions || ordinal < 0;
    plan.ordinals.push_back(ordinal);
  }
  if (hasExpressions) {
    plan.outputs = std::make_shared<DynasetPlan::Outputs>();
    plan.outputs->sql = sql;
    plan.outputs->parameters = parameters;
    plan.outputs->isRowOnly = isRowOnly;
  }
  return plan;
}

std::optional<std::vector<Value>> Engine::dynasetRow(const DynasetPlan& plan, RowId row,
                                                     uint64_t& identity) {
  const ReadScope scope(impl_->catalog.pager());
  const Table table(impl_->catalog, plan.table);
  std::vector<Value> values(plan.ordinals.size());
  auto fetched = table.fetch(row);
  if (!fetched) return std::nullopt;
  const RowReader reader = table.reader(fetched->bytes, fetched->where);
  const uint64_t found = table.identity(reader);
  if (identity != 0 && identity != found) return std::nullopt;
  identity = found;
  for (size_t i = 0; i < values.size(); ++i)
    if (plan.ordinals[i] >= 0) values[i] = table.column(reader, plan.ordinals[i]);
  if (!plan.outputs) return values;

  DynasetPlan::Outputs& outputs = *plan.outputs;
  if (!outputs.slot || !outputs.isRowOnly) {
    outputs.prepared = impl_->prepare(outputs.sql, outputs.parameters);
    outputs.slot = outputs.prepared.slots[0].get();
    auto* collected = dynamic_cast<CollectedRows*>(outputs.prepared.rows.get());
    outputs.select =
        collected ? collected->onlySelect : dynamic_cast<SelectRows*>(outputs.prepared.rows.get());
  }
  const EvalContext now = impl_->context();
  outputs.prepared.context.now = now.now;
  outputs.slot->setRow(row, fetched->bytes, fetched->where);
  outputs.select->moved();
  for (size_t i = 0; i < values.size(); ++i)
    if (plan.ordinals[i] < 0) values[i] = outputs.select->take(i, outputs.prepared.context);
  outputs.slot->release();
  return values;
}

// --- statements

int64_t Engine::Impl::run(const ast::Statement& s, const Parameters& parameters, EvalContext& c) {
  StatementContext context{catalog, rules, parameters, c, lastAutoNumber, s.parameters};
  struct Runner {
    StatementContext& c;
    int64_t operator()(const ast::Query& q) const {
      if (!isMakeTable(q)) throw Error(3065, {}, "DAO.Database");
      return runSelectInto(q, c);
    }
    int64_t operator()(const ast::Insert& i) const { return runInsert(i, c); }
    int64_t operator()(const ast::Update& u) const { return runUpdate(u, c); }
    int64_t operator()(const ast::Delete& d) const { return runDelete(d, c); }
    int64_t operator()(const ast::CreateTable& t) const { return runCreateTable(t, c), 0; }
    int64_t operator()(const ast::AlterTable& t) const { return runAlterTable(t, c), 0; }
    int64_t operator()(const ast::CreateIndex& i) const { return runCreateIndex(i, c), 0; }
    int64_t operator()(const ast::DropTable& t) const { return c.catalog.dropTable(t.name), 0; }
    int64_t operator()(const ast::DropIndex& i) const { return c.catalog.dropIndex(i.table, i.name), 0; }
  };
  return std::visit(Runner{context}, s.body);
}

int64_t Engine::execute(std::u16string_view sql, const Parameters& parameters) {
  ParsedStatement statement;
  {
    const ReadScope scope(impl_->catalog.pager());
    statement = impl_->parseSource(sql);
    const auto* q = std::get_if<ast::Query>(&statement->body);
    if (q && !isMakeTable(*q)) throw Error(3065, {}, "DAO.Database");
  }
  const int32_t before = impl_->lastAutoNumber;
  Transaction transaction(impl_->catalog.pager());
  EvalContext context = impl_->context();
  try {
    const RunningStatement running(impl_->rules, context);
    const int64_t count = impl_->run(*statement, parameters, context);
    transaction.commit();
    impl_->randomState = context.randomState;
    return count;
  } catch (...) {
    impl_->lastAutoNumber = before;
    throw;
  }
}

Engine::Criterion Engine::criterion(std::u16string_view condition, const std::vector<ResultColumn>& columns) {
  struct Compiled {
    EvalContext context;
    Parameters none;
    std::unique_ptr<Slot> slot;
    std::vector<std::unique_ptr<Slot>> others;
    ExpressionPtr condition;
  };
  const ReadScope scope(impl_->catalog.pager());
  auto compiled = std::make_shared<Compiled>();
  compiled->context = impl_->context();
  compiled->slot = std::make_unique<Slot>(u"", columns);
  Binder binder(impl_->catalog, &impl_->rules, compiled->none, compiled->context);
  Scope names;
  names.slots.push_back(compiled->slot.get());
  compiled->condition = binder.expression(*parseExpression(condition), names);
  if (!binder.missing().empty()) throw Error(3070, {*binder.missing().begin()}, "DAO.Recordset");
  compiled->others = binder.takeSlots();
  return [compiled, this](std::span<const Value> values) {
    const ReadScope reading(impl_->catalog.pager());
    compiled->slot->setValues(values.data());
    return isTrue(compiled->condition->test(compiled->context));
  };
}

}  // namespace jet::sql
