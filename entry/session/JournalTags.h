#pragma once

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>

namespace quillo {

class Registration;

// Asks for the tags in use in the configured journal, most used first, each once. `answer` is called at most once,
// later and in the same thread, and not any more once what was returned is gone. Who cannot be asked answers nothing.
using TagSource = std::function<std::unique_ptr<Registration>(std::function<void(const QStringList& tags)> answer)>;

// The tags in use in the journal, for completion. They may be many and come from another process, so they are asked for
// when they are first wanted, and kept only for as long as they may be wanted again. Main thread only.
class JournalTags : public QObject {
  Q_OBJECT

 public:
  // An empty source has none.
  explicit JournalTags(TagSource source);
  ~JournalTags() override;

  // As far as they are known: none the first time, which asks for them.
  [[nodiscard]] const QStringList& tags();
  // Also ends a question that waits for its answer; the next call of tags() asks anew.
  void forget();

 Q_SIGNALS:
  void didBecomeKnown();

 private:
  TagSource m_source;
  QStringList m_tags;
  bool m_isAsked{false};
  std::unique_ptr<Registration> m_question;
};

}  // namespace quillo
