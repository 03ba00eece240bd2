#pragma once

#include "entry/spelling/GrammarClient.h"

#include <QObject>
#include <QTextBlock>
#include <QTimer>

#include <chrono>
#include <functional>

namespace quillo {

class SpellingHighlighter;

// Has the grammar of the paragraphs on the screen looked at, one after the other, when the user pauses. Without a
// server it tries once and then rests until the user comes back to the text or asks for the menu.
class GrammarReviewer : public QObject {
  Q_OBJECT

 public:
  // The highlighter shows the issues; it must outlive the reviewer.
  GrammarReviewer(SpellingHighlighter& highlighter, std::function<QList<QTextBlock>()> visibleBlocks,
                  const QUrl& server);

  [[nodiscard]] GrammarClient& client() { return m_client; }

  void setEnabled(bool enabled);
  // How long without a change the user is taken to pause; 700 ms at first.
  void setPauseDuration(std::chrono::milliseconds duration) { m_pause.setInterval(duration); }
  // The text changed, or other paragraphs came onto the screen.
  void somethingToReview();
  // The server may have been started meanwhile.
  void tryAgain();
  // Whether a pause is being waited for.
  [[nodiscard]] bool isWaiting() const { return m_pause.isActive(); }

 private:
  void reviewNext();

  SpellingHighlighter& m_highlighter;
  std::function<QList<QTextBlock>()> m_visibleBlocks;
  GrammarClient m_client;
  QTimer m_pause;
  bool m_isEnabled{false};
  bool m_mayTry{true};
};

}  // namespace quillo
