#pragma once

#include <QObject>
#include <QStringList>
#include <QUrl>

#include <optional>
#include <stop_token>
#include <thread>

namespace quillo {

// The tags in use in a journal, most used first, for completion. A journal may hold many entries, so they are read in a
// thread that ends with the reading, and what was known before serves meanwhile. Main thread only.
class JournalTags : public QObject {
  Q_OBJECT

 public:
  JournalTags() = default;
  // Stops a reading that is under way, at its next entry.
  ~JournalTags() override;

  [[nodiscard]] const QStringList& tags() const { return m_tags; }
  // Reads the journal's entries anew; nothing while a reading is under way.
  void refresh(const std::optional<QUrl>& journal);

 private:
  QStringList m_tags;
  std::stop_source m_stop;
  bool m_isReading{false};
  std::thread m_thread;
};

}  // namespace quillo
