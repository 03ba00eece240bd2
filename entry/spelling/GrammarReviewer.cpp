#include "entry/spelling/GrammarReviewer.h"

#include "entry/document/ParagraphSeams.h"
#include "entry/spelling/SpellingHighlighter.h"

#include <QTextCursor>

namespace quillo {

GrammarReviewer::GrammarReviewer(SpellingHighlighter& highlighter, std::function<QList<QTextBlock>()> visibleBlocks,
                                 const QUrl& server)
    : m_highlighter(highlighter), m_visibleBlocks(std::move(visibleBlocks)), m_client(server) {
  m_pause.setSingleShot(true);
  setPauseDuration(std::chrono::milliseconds(700));
  connect(&m_pause, &QTimer::timeout, this, &GrammarReviewer::reviewNext);
  connect(&m_client, &GrammarClient::availabilityDidChange, this, [this] {
    if (m_client.availability() == GrammarClient::Availability::Available) tryAgain();
  });
}

void GrammarReviewer::setEnabled(bool enabled) {
  if (m_isEnabled == enabled) return;
  m_isEnabled = enabled;
  m_pause.stop();
  if (enabled)
    tryAgain();
  else
    m_highlighter.removeAllIssues();
}

void GrammarReviewer::somethingToReview() {
  if (m_isEnabled && m_mayTry) m_pause.start();
}

void GrammarReviewer::tryAgain() {
  m_mayTry = true;
  somethingToReview();
}

void GrammarReviewer::reviewNext() {
  if (!m_isEnabled) return;
  for (const QTextBlock& block : m_visibleBlocks()) {
    // A sentence may reach over the end of a block that is only a part of its paragraph.
    if (ParagraphSeams::isBefore(block) || ParagraphSeams::isBehind(block)) continue;
    const QString text = block.text();
    if (m_highlighter.isReviewed(block) || text.trimmed().isEmpty() || text.size() > GrammarClient::longestText)
      continue;
    const QTextCursor place(block);
    m_client.check(text, [this, place, text](const std::optional<QList<GrammarIssue>>& issues) {
      m_mayTry = issues.has_value();
      if (!m_isEnabled || !issues) return;
      m_highlighter.setIssues(place.block(), text, *issues);
      // Each answer leaves one paragraph less, unless it was changed meanwhile; that change starts a pause of its own.
      if (!m_pause.isActive()) reviewNext();
    });
    return;
  }
}

}  // namespace quillo
