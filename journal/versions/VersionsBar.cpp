#include "journal/versions/VersionsBar.h"

#include "controls/Fonts.h"
#include "journal/versions/VersionWords.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace quillo {

using namespace Qt::StringLiterals;

VersionsBar::VersionsBar(QWidget* parent)
    : QFrame(parent), m_text(new QLabel(this)), m_compare(new QPushButton(u"Compare…"_s, this)) {
  setObjectName(u"versionsBar"_s);
  m_text->setFont(textFont(13));
  m_compare->setFont(textFont(13));
  m_compare->setObjectName(u"compareVersions"_s);
  m_compare->setToolTip(u"Look at the versions side by side and decide"_s);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(24, 6, 16, 6);
  row->addWidget(m_text, 1);
  row->addWidget(m_compare);
  connect(m_compare, &QPushButton::clicked, this, &VersionsBar::comparisonWanted);
  applyColors();
  hide();
}

void VersionsBar::setVersions(qsizetype count) {
  if (count > 1) m_text->setText(VersionWords::count(count));
  setVisible(count > 1);
}

void VersionsBar::setReading(bool isReading) {
  m_compare->setEnabled(!isReading);
}

void VersionsBar::applyColors() {
  const JournalColors colors = JournalColors::current();
  // A style sheet that is set is a change of the palette, too.
  if (colors == m_colors) return;
  m_colors = colors;
  setStyleSheet(
      u"#versionsBar { background: %1; border: none; border-bottom: 1px solid %2 }"
      "#versionsBar QLabel { color: %3 }"_s.arg(blended(colors.accent, colors.paper, 0.1).name(), colors.line.name(),
                                                colors.text.name()));
}

}  // namespace quillo
