#include "qlcore/index/IndexDatabase.h"

#include <QSqlDatabase>
#include <QSqlError>

#include <atomic>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Longer than any transaction of ours takes, also on a slow disk.
constexpr int longestWaitMilliseconds = 10'000;

// The number that the database's library gives for an error, without its finer distinction.
int codeOf(const QSqlError& error) {
  return error.nativeErrorCode().toInt() & 0xFF;
}

IndexFailure failureOf(int code) {
  switch (code) {
    case 5:  // busy
    case 6:  // locked
      return IndexFailure::Busy;
    case 3:   // no permission
    case 7:   // no memory
    case 8:   // read-only
    case 13:  // full
    case 14:  // cannot be opened
    case 22:  // no large files
    case 23:  // no authorization
      return IndexFailure::Unwritable;
    default:
      return IndexFailure::Damaged;
  }
}

}  // namespace

IndexDatabase::~IndexDatabase() {
  close();
}

bool IndexDatabase::open(const QString& path, qint64 cacheKiB) {
  close();
  static std::atomic<unsigned> counter{0};
  m_connection = u"quillo-index-%1"_s.arg(++counter);
  QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_connection);
  database.setDatabaseName(path.isEmpty() ? u":memory:"_s : path);
  database.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=%1"_s.arg(longestWaitMilliseconds));
  if (!database.open()) {
    const QSqlError error = database.lastError();
    // Without the driver there is no number.
    fail(error.nativeErrorCode().isEmpty() ? IndexFailure::Unwritable : failureOf(codeOf(error)), error.text());
    return false;
  }
  // What the database sorts or sets aside stays in memory: it is the journal's text.
  return run(u"PRAGMA temp_store = MEMORY"_s) && run(u"PRAGMA cache_size = -%1"_s.arg(cacheKiB)) &&
         run(u"PRAGMA secure_delete = ON"_s) && run(u"PRAGMA trusted_schema = OFF"_s);
}

void IndexDatabase::close() {
  m_statements.clear();
  m_failure = IndexFailure::None;
  m_failureText.clear();
  if (m_connection.isEmpty()) return;
  QSqlDatabase::database(m_connection, /*open=*/false).close();
  QSqlDatabase::removeDatabase(std::exchange(m_connection, {}));
}

void IndexDatabase::fail(IndexFailure failure, const QString& text) {
  if (m_failure != IndexFailure::None) return;
  m_failure = failure;
  m_failureText = text;
}

void IndexDatabase::takeError(const QSqlQuery& query) {
  const QSqlError error = query.lastError();
  if (error.type() != QSqlError::NoError) fail(failureOf(codeOf(error)), error.text());
}

QSqlQuery* IndexDatabase::execute(const QString& sql, const QVariantList& values) {
  if (m_failure != IndexFailure::None || m_connection.isEmpty()) return nullptr;
  auto known = m_statements.find(sql);
  if (known == m_statements.end()) {
    QSqlQuery query(QSqlDatabase::database(m_connection, /*open=*/false));
    query.setForwardOnly(true);
    if (!query.prepare(sql)) {
      takeError(query);
      return nullptr;
    }
    known = m_statements.emplace(sql, std::move(query)).first;
  }
  QSqlQuery& query = known->second;
  for (int i = 0; i < static_cast<int>(values.size()); ++i) query.bindValue(i, values[i]);
  if (query.exec()) return &query;
  takeError(query);
  return nullptr;
}

IndexDatabase::Rows IndexDatabase::rows(const QString& sql, const QVariantList& values) {
  return {*this, execute(sql, values)};
}

bool IndexDatabase::run(const QString& sql, const QVariantList& values) {
  QSqlQuery* query = execute(sql, values);
  if (query) query->finish();
  return query != nullptr;
}

QVariant IndexDatabase::first(const QString& sql, const QVariantList& values) {
  Rows found = rows(sql, values);
  return found.next() ? found.value(0) : QVariant();
}

IndexDatabase::Rows::~Rows() {
  if (m_query) m_query->finish();
}

bool IndexDatabase::Rows::next() {
  if (!m_query) return false;
  if (m_query->next()) return true;
  m_database.takeError(*m_query);
  return false;
}

bool IndexDatabase::begin(bool forWriting) {
  return run(forWriting ? u"BEGIN IMMEDIATE"_s : u"BEGIN"_s);
}

bool IndexDatabase::commit() {
  return run(u"COMMIT"_s);
}

void IndexDatabase::rollBack() {
  // Whatever has failed, the transaction ends; where it has ended by itself, there is nothing to undo.
  const IndexFailure failure = std::exchange(m_failure, IndexFailure::None);
  const QString text = m_failureText;
  run(u"ROLLBACK"_s);
  m_failure = failure;
  m_failureText = text;
}

}  // namespace quillo
