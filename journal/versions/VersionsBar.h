#pragma once

#include "controls/look/JournalColors.h"

#include <QFrame>

class QLabel;
class QPushButton;

namespace quillo {

// Stands above an entry of which there are several versions, says so, and leads to them.
class VersionsBar : public QFrame {
  Q_OBJECT

 public:
  explicit VersionsBar(QWidget* parent = nullptr);

  // Hides where there is one only.
  void setVersions(qsizetype count);
  // While they are being read, they are not asked for again.
  void setReading(bool isReading);
  // To be called when the application's palette has changed.
  void applyColors();

 Q_SIGNALS:
  void comparisonWanted();

 private:
  QLabel* m_text;
  QPushButton* m_compare;
  JournalColors m_colors;  // in the style sheet
};

}  // namespace quillo
