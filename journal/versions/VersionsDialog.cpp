#include "journal/versions/VersionsDialog.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"
#include "journal/versions/VersionPane.h"
#include "journal/versions/VersionWords.h"
#include "preferences/controls/ChoiceBox.h"
#include "preferences/controls/FormStyle.h"
#include "preferences/controls/Problem.h"
#include "qlcore/TextDifference.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTextOption>
#include <QVBoxLayout>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// In points.
constexpr int side = 24;
constexpr int usualWidth = 880;
constexpr int usualHeight = 680;

QLabel* makeLabel(const QFont& font, const QString& role, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setFont(font);
  label->setProperty("role", role);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  return label;
}

// Return decides nothing by itself.
QPushButton* makeButton(const QString& title, const QString& name, QWidget* parent) {
  auto* button = new QPushButton(title, parent);
  button->setObjectName(name);
  button->setFont(textFont(13));
  button->setAutoDefault(false);
  return button;
}

// Each paragraph stands where its script begins.
void setOwnDirection(QPlainTextEdit& text) {
  QTextOption option = text.document()->defaultTextOption();
  option.setTextDirection(Qt::LayoutDirectionAuto);
  text.document()->setDefaultTextOption(option);
}

}  // namespace

VersionsDialog::VersionsDialog(QWidget* parent)
    : QDialog(parent),
      m_title(makeLabel(textFont(18, QFont::DemiBold), {}, this)),
      m_this(new VersionPane(u"This"_s, this)),
      m_that(new VersionPane(u"That"_s, this)),
      m_chooser(new ChoiceBox(this)),
      m_mergedNote(makeLabel(textFont(12), u"note"_s, this)),
      m_merged(new QPlainTextEdit(this)),
      m_problem(makeLabel(textFont(13), u"error"_s, this)),
      m_footer(new QWidget(this)),
      m_keepThis(makeButton(u"Keep &This"_s, u"keepThis"_s, m_footer)),
      m_keepThat(makeButton(u"Keep Th&at"_s, u"keepThat"_s, m_footer)),
      m_keepAll(makeButton(u"Keep &Both as Two Entries"_s, u"keepAll"_s, m_footer)),
      m_merge(makeButton(u"Use &Merged Text"_s, u"primary"_s, m_footer)) {
  setObjectName(u"versionsDialog"_s);
  setWindowTitle(u"Compare Versions"_s);
  setWindowModality(Qt::WindowModal);
  build();
  applyColors();
  resize(usualWidth, usualHeight);
  m_this->text().setFocus();
}

void VersionsDialog::build() {
  m_problem->setObjectName(u"problem"_s);
  m_problem->hide();
  auto* middle = new QVBoxLayout;
  middle->setContentsMargins(side, 20, side, 14);
  middle->setSpacing(10);
  auto* heading = new QHBoxLayout;
  heading->setSpacing(16);
  heading->addWidget(m_title, 1);
  heading->addWidget(m_chooser, 1);
  middle->addLayout(heading);
  middle->addWidget(buildPanes(), 3);
  middle->addWidget(buildMerged(), 2);
  middle->addWidget(m_problem);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addLayout(middle, 1);
  column->addWidget(buildFooter());
}

QWidget* VersionsDialog::buildPanes() {
  auto* panes = new QWidget(this);
  auto* row = new QHBoxLayout(panes);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(16);
  row->addWidget(m_this, 1);
  row->addWidget(m_that, 1);
  m_this->text().setObjectName(u"thisText"_s);
  m_that->text().setObjectName(u"thatText"_s);
  m_chooser->setObjectName(u"otherVersion"_s);
  m_chooser->setAccessibleName(u"The other version"_s);
  connect(m_chooser, &QComboBox::currentIndexChanged, this, &VersionsDialog::showVersions);
  for (VersionPane* pane : {m_this, m_that}) setOwnDirection(pane->text());
  scrollTogether();
  return panes;
}

// By their parts, since one may be longer than the other.
void VersionsDialog::scrollTogether() {
  QScrollBar* first = m_this->text().verticalScrollBar();
  QScrollBar* second = m_that->text().verticalScrollBar();
  const auto follow = [this](QScrollBar* leader, QScrollBar* follower) {
    connect(leader, &QScrollBar::valueChanged, this, [leader, follower](int value) {
      const QSignalBlocker quiet(leader);
      if (leader->maximum() == 0 || follower->signalsBlocked()) return;
      follower->setValue(static_cast<int>(qint64{value} * follower->maximum() / leader->maximum()));
    });
  };
  follow(first, second);
  follow(second, first);
}

QWidget* VersionsDialog::buildMerged() {
  auto* whole = new QWidget(this);
  QLabel* title = makeLabel(textFont(14, QFont::DemiBold), {}, whole);
  title->setText(u"Merged text"_s);
  title->setBuddy(m_merged);
  m_merged->setObjectName(u"mergedText"_s);
  m_merged->setAccessibleName(u"Merged text"_s);
  m_merged->setFont(textFont(14));
  m_merged->setTabChangesFocus(true);
  setOwnDirection(*m_merged);
  auto* column = new QVBoxLayout(whole);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(3);
  column->addWidget(title);
  column->addWidget(m_mergedNote);
  column->addSpacing(3);
  column->addWidget(m_merged, 1);
  connect(m_merged, &QPlainTextEdit::textChanged, this, &VersionsDialog::showButtons);
  return whole;
}

QWidget* VersionsDialog::buildFooter() {
  QPushButton* cancel = makeButton(u"Cancel"_s, u"cancel"_s, m_footer);
  auto* row = new QHBoxLayout(m_footer);
  row->setContentsMargins(side, 12, side, 12);
  row->setSpacing(10);
  for (QPushButton* button : {m_keepThis, m_keepThat, m_keepAll}) row->addWidget(button);
  row->addStretch();
  row->addWidget(cancel);
  row->addWidget(m_merge);
  using Kind = VersionDecision::Kind;
  connect(cancel, &QPushButton::clicked, this, &VersionsDialog::reject);
  connect(m_keepThis, &QPushButton::clicked, this, [this] { Q_EMIT decided({Kind::Keep, 0, {}}); });
  connect(m_keepThat, &QPushButton::clicked, this, [this] { Q_EMIT decided({Kind::Keep, other(), {}}); });
  connect(m_keepAll, &QPushButton::clicked, this, [this] { Q_EMIT decided({Kind::KeepAll, 0, {}}); });
  connect(m_merge, &QPushButton::clicked, this, [this] { Q_EMIT decided({Kind::Merge, 0, m_merged->toPlainText()}); });
  return m_footer;
}

qsizetype VersionsDialog::other() const {
  return std::max(0, m_chooser->currentIndex()) + 1;
}

// -1 where none is the later one.
qsizetype VersionsDialog::newest() const {
  const EntryVersion& one = m_entry.versions[0];
  const EntryVersion& two = m_entry.versions[other()];
  if (!one.isWhole() || !two.isWhole() || one.modificationDate() == two.modificationDate()) return -1;
  return one.modificationDate() < two.modificationDate() ? other() : 0;
}

void VersionsDialog::setEntry(const EntryVersions& entry, const MergedText& merged) {
  const bool isTyped = m_merged->document()->isModified();
  m_entry = entry;
  m_title->setText(VersionWords::count(entry.versions.size()));
  const bool hasTwo = entry.versions.size() == 2;
  m_keepAll->setText(hasTwo ? u"Keep &Both as Two Entries"_s
                            : u"Keep &All as %1 Entries"_s.arg(std::count_if(
                                  entry.versions.begin(), entry.versions.end(), [](auto& v) { return v.isWhole(); })));
  m_keepThat->setText(hasTwo ? u"Keep Th&at"_s : u"Keep T&hat"_s);
  fillChooser();
  if (!isTyped) {
    m_merged->setPlainText(merged.text);
    m_merged->document()->setModified(false);
  }
  m_mergedNote->setText(merged.hasClash
                            ? u"Where the versions say something else in the same place, both are here. Change it as "
                              "you like."_s
                            : u"All words of the versions. Change it as you like."_s);
  showVersions();
}

void VersionsDialog::fillChooser() {
  const QSignalBlocker quiet(m_chooser);
  m_chooser->clear();
  for (qsizetype i = 1; i < m_entry.versions.size(); ++i)
    m_chooser->addItem(u"%1 of %2: %3"_s.arg(QString::number(i), QString::number(m_entry.versions.size() - 1),
                                             VersionWords::origin(m_entry.versions[i])));
  m_chooser->setVisible(m_entry.versions.size() > 2);
}

void VersionsDialog::showVersions() {
  const EntryVersion& one = m_entry.versions[0];
  const EntryVersion& two = m_entry.versions[other()];
  const bool areWhole = one.isWhole() && two.isWhole();
  const auto different = areWhole ? TextDifference::differentWords(one.text(), two.text()) : TextDifference::Ranges();
  m_this->setVersion(one, two, different.first, newest() == 0);
  m_that->setVersion(two, one, different.second, newest() == other());
  showButtons();
}

void VersionsDialog::showButtons() {
  if (m_entry.versions.size() < 2) return;
  const auto isWhole = [](const EntryVersion& version) { return version.isWhole(); };
  const auto whole = std::count_if(m_entry.versions.begin(), m_entry.versions.end(), isWhole);
  m_keepThis->setEnabled(!m_isAtWork && m_entry.versions[0].isWhole());
  m_keepThat->setEnabled(!m_isAtWork && m_entry.versions[other()].isWhole());
  m_keepAll->setEnabled(!m_isAtWork && whole > 1);
  m_merge->setEnabled(!m_isAtWork && whole > 0 && !m_merged->document()->isEmpty());
}

void VersionsDialog::setAtWork(bool isAtWork) {
  m_isAtWork = isAtWork;
  m_merged->setReadOnly(isAtWork);
  m_chooser->setEnabled(!isAtWork);
  showButtons();
}

void VersionsDialog::setProblem(const QString& text) {
  m_problem->setVisible(!text.isEmpty());
  showProblem(*m_problem, text);
}

void VersionsDialog::applyColors() {
  applyFormStyle(*this);
  for (VersionPane* pane : {m_this, m_that}) pane->applyColors();
}

void VersionsDialog::changeEvent(QEvent* event) {
  QDialog::changeEvent(event);
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange) applyColors();
}

void VersionsDialog::paintEvent(QPaintEvent*) {
  const JournalColors colors = JournalColors::current();
  QPainter painter(this);
  painter.fillRect(rect(), colors.ground);
  painter.fillRect(0, m_footer->y() - 1, width(), 1, colors.line);
}

}  // namespace quillo
