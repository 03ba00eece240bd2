#pragma once

#include <QSqlQuery>
#include <QString>
#include <QVariantList>

#include <unordered_map>

namespace quillo {

// Why a statement failed, as far as it matters for what is to be done.
enum class IndexFailure {
  None,
  Damaged,     // the file is not what it was
  Unwritable,  // full, read-only, no permission
  Busy,        // another program does not let go of it
};

// One connection to a database. After the first failure nothing is done any more until it is closed: callers go through
// with their work and look at failure() at its end. Belongs to the thread that opened it.
class IndexDatabase {
 public:
  IndexDatabase() = default;
  ~IndexDatabase();
  IndexDatabase(const IndexDatabase&) = delete;
  IndexDatabase& operator=(const IndexDatabase&) = delete;

  // The file at `path`, which must be there, or one in memory where that is empty. Whether it is a database shows with
  // the first statement.
  bool open(const QString& path, qint64 cacheKiB);
  void close();

  // The rows of a statement. Only one at a time of each statement; they end with the object.
  class Rows {
   public:
    Rows(IndexDatabase& database, QSqlQuery* query) : m_database(database), m_query(query) {}
    ~Rows();
    Rows(const Rows&) = delete;
    Rows& operator=(const Rows&) = delete;
    [[nodiscard]] bool next();
    [[nodiscard]] QVariant value(int column) const { return m_query->value(column); }
    [[nodiscard]] qint64 number(int column) const { return value(column).toLongLong(); }

   private:
    IndexDatabase& m_database;
    QSqlQuery* m_query;
  };
  // `sql` is one of a fixed set of texts, which are kept prepared; whatever varies is in `values`.
  [[nodiscard]] Rows rows(const QString& sql, const QVariantList& values = {});
  bool run(const QString& sql, const QVariantList& values = {});
  // The first column of the first row; invalid where there is none.
  [[nodiscard]] QVariant first(const QString& sql, const QVariantList& values = {});

  // All or nothing of what is run until commit(); `forWriting` waits for other writers at once.
  bool begin(bool forWriting);
  bool commit();
  void rollBack();

  [[nodiscard]] IndexFailure failure() const { return m_failure; }
  [[nodiscard]] const QString& failureText() const { return m_failureText; }
  // For damage that shows in what was read.
  void fail(IndexFailure failure, const QString& text);
  // After a failure that is over, such as another program's being busy.
  void forgetFailure() { m_failure = IndexFailure::None; }

 private:
  QSqlQuery* execute(const QString& sql, const QVariantList& values);
  void takeError(const QSqlQuery& query);

  QString m_connection;
  std::unordered_map<QString, QSqlQuery> m_statements;  // which stay where they are
  IndexFailure m_failure{IndexFailure::None};
  QString m_failureText;
};

}  // namespace quillo
