#pragma once

#include "foundation/TextRange.h"
#include "qlcore/conflicts/EntryVersions.h"

#include <QList>
#include <QWidget>

class QLabel;
class QPlainTextEdit;

namespace quillo {

// One version of an entry: where it comes from, when it was written, what of it is not so in the other, and its text
// with what differs marked. Nothing in it can be changed; it can be copied.
class VersionPane : public QWidget {
  Q_OBJECT

 public:
  // `name` is how the buttons call it.
  explicit VersionPane(const QString& name, QWidget* parent = nullptr);

  void setVersion(const EntryVersion& version, const EntryVersion& other, const QList<TextRange>& different,
                  bool isNewest);
  [[nodiscard]] QPlainTextEdit& text() const { return *m_text; }

  // To be called when the application's palette has changed.
  void applyColors();

 private:
  void mark();

  QString m_name;
  QLabel* m_origin;
  QLabel* m_saved;
  QLabel* m_details;
  QPlainTextEdit* m_text;
  QList<TextRange> m_different;
};

}  // namespace quillo
