#pragma once

#include <QObject>
#include <QString>
#include <QTextBlock>
#include <QTextCursor>

class QTextDocument;

namespace quillo {

// Keeps the blocks of a plain text document short. Qt lays a block out as a whole at every key, and takes the square of
// its length where a line cannot be broken, so that a pasted data URL would stop the window. A paragraph beyond the
// bounds below is therefore held in several blocks. What stands between two blocks of one paragraph is a seam: a
// separator that counts as one position of the document but is no part of the text. It carries a character format of
// its own, which undo and redo bring back together with it.
//
// A seam lies behind a space where there is one near, else where a line may break, and never inside of a character.
class ParagraphSeams : public QObject {
  Q_OBJECT

 public:
  // A block longer than this, or with a longer stretch in which no line may break, is parted.
  static constexpr qsizetype longestBlock = 8192;
  static constexpr qsizetype longestUnbroken = 2048;

  // The document must outlive the seams.
  explicit ParagraphSeams(QTextDocument& document);

  // Whether a seam, not a line end, stands before the block.
  [[nodiscard]] static bool isBefore(const QTextBlock& block);
  [[nodiscard]] static bool isBehind(const QTextBlock& block) { return isBefore(block.next()); }
  // Whether a run of characters without a space reaches over the seam at the beginning or the end of the block.
  [[nodiscard]] static bool cutsRunBefore(const QTextBlock& block);
  [[nodiscard]] static bool cutsRunBehind(const QTextBlock& block) { return cutsRunBefore(block.next()); }
  // The first and the last block of the paragraph that the block belongs to.
  [[nodiscard]] static QTextBlock firstBlock(QTextBlock block);
  [[nodiscard]] static QTextBlock lastBlock(QTextBlock block);

  // The text without its seams, with "\n" at line ends.
  [[nodiscard]] QString string() const;
  // What is selected, without seams; else as QTextCursor has it.
  [[nodiscard]] static QString selectedString(const QTextCursor& selection);

  // Replaces the selection in one undo step, parting what is too long before it is ever laid out.
  void insert(QTextCursor& at, const QString& text);
  // Whether there may be any.
  [[nodiscard]] bool hasSeams() const { return m_formatIndex != noFormat; }
  // The document was emptied and has no seams.
  void reset() { m_formatIndex = noFormat; }

  // Parts and joins blocks where the text has changed since the last call. Steps of undo of their own, which leave
  // string() as it is; not to be called for changes by undo and redo.
  void arrange();
  // Forgets what has changed.
  void leaveAsItIs() { m_touchedFrom = m_touchedTo = -1; }
  [[nodiscard]] bool isArranging() const { return m_isArranging; }

 private:
  static constexpr int noFormat = -1;

  void touched(int position, int added);
  void arrangeBlocks(int from, int to);
  [[nodiscard]] bool isToBeJoined(const QTextBlock& block) const;
  QTextBlock joined(const QTextBlock& block);
  QTextBlock parted(const QTextBlock& block);

  QTextDocument& m_document;
  // Of the seams; none as long as no paragraph was parted.
  int m_formatIndex{noFormat};
  // What has changed, in positions of the document; -1 for nothing.
  int m_touchedFrom{-1};
  int m_touchedTo{-1};
  bool m_isInserting{false};
  bool m_isArranging{false};
};

}  // namespace quillo
