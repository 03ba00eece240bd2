#pragma once

#include "foundation/TextRange.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <functional>

class QKeyEvent;

namespace quillo {

class EntryViewTextView;
class HashtagCompletionList;

// Offers the tags that are already in use while a hashtag is typed. Up and Down choose, Tab and Return take, Escape
// closes the list until the next hashtag. The first tag is chosen beforehand, unless nothing stands behind the "#" yet
// or it is a tag as it stands: then Return is a new line.
class HashtagCompleter : public QObject {
  Q_OBJECT

 public:
  // Tags without the "#", most used first.
  using Source = std::function<QStringList()>;

  // The view must outlive the completer.
  explicit HashtagCompleter(EntryViewTextView& view);
  ~HashtagCompleter() override;

  // Asked once for each hashtag.
  void setSource(Source source) { m_source = std::move(source); }

  // The user has typed something; the caret stands behind it.
  void userDidType();
  void caretDidMove();
  void textDidScroll();
  // The source has tags that it did not have when it was asked: a list that is waited for opens.
  void sourceDidChange();
  void close();

  // Whether the open list takes this key.
  [[nodiscard]] bool wantsKey(const QKeyEvent& event) const;
  // Answers whether the key was dealt with.
  bool handleKey(const QKeyEvent& event);

 private:
  void begin(qsizetype wordStart);
  void end();
  void showMatches(TextRange word);
  void hideList();
  void take(const QString& tag, int key);
  [[nodiscard]] bool isOpen() const;
  [[nodiscard]] HashtagCompletionList& list();

  EntryViewTextView& m_view;
  Source m_source;
  QPointer<HashtagCompletionList> m_list;
  QStringList m_tags;
  // Of the hashtag being typed; -1 for none.
  qsizetype m_wordStart{-1};
  bool m_isDismissed{false};
  // Nothing but typing has happened since the list was last looked for.
  bool m_isWanted{false};
};

}  // namespace quillo
