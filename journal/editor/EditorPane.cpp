#include "journal/editor/EditorPane.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"
#include "entry/text/EntryViewTextView.h"
#include "journal/editor/LineSpacing.h"
#include "journal/model/ClockTime.h"
#include "journal/model/EntryTime.h"
#include "journal/views/StatusRow.h"
#include "qlcore/QLJournalEntryFile.h"

#include <QDateTime>
#include <QFontMetricsF>
#include <QLabel>
#include <QScopedValueRollback>
#include <QTextBoundaryFinder>
#include <QVBoxLayout>

#include <chrono>

namespace quillo {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto pauseBeforeSave = 1s;
constexpr double lineSpacing = 1.35;  // of a line's own height, which is 1.2 of the type's size
constexpr int charactersInColumn = 66;
// In points.
constexpr int narrowestMargin = 24;
constexpr int widestMargin = 62;
constexpr int topMargin = 28;

int wordCount(const QString& text) {
  int count = 0;
  QTextBoundaryFinder words(QTextBoundaryFinder::Word, text);
  // As many steps as there are boundaries.
  for (qsizetype at = 0; at >= 0; at = words.toNextBoundary())
    if (words.boundaryReasons() & QTextBoundaryFinder::StartOfItem) ++count;
  return count;
}

}  // namespace

EditorPane::EditorPane(const EditorServices& services, StatusRow& status, QWidget* parent)
    : QWidget(parent),
      m_place(services.place),
      m_session(services.session, *this, m_place),
      m_view(new EntryViewTextView(services.text)),
      m_heading(new QLabel(this)),
      m_details(new QLabel(this)),
      m_status(status) {
  buildView();
  m_saveTimer.setSingleShot(true);
  m_saveTimer.setInterval(pauseBeforeSave);
  connect(&m_saveTimer, &QTimer::timeout, this, &EditorPane::save);
  connect(m_view, &EntryViewTextView::textDidChange, this, &EditorPane::textDidChange);
  connect(&m_place, &EntryPlace::metadataDidChange, this, &EditorPane::showHeading);
  m_view->setCompletionSource([this] { return m_session.tags().tags(); });
  connect(&m_session.tags(), &JournalTags::didBecomeKnown, m_view, &EntryViewTextView::completionSourceDidChange);
  m_view->awakeFromNib();
  applyColors();
  showHeading();
}

EditorPane::~EditorPane() {
  // Whoever closes the window has saved; what failed is in the draft.
  m_saveTimer.stop();
}

void EditorPane::buildView() {
  m_heading->setFont(textFont(22, QFont::DemiBold));
  m_heading->setTextFormat(Qt::PlainText);
  m_heading->setWordWrap(true);
  m_details->setFont(textFont(13));
  m_details->setTextFormat(Qt::PlainText);
  m_details->setWordWrap(true);
  m_view->setAccessibleName(u"Entry"_s);
  setLineSpacing(*m_view, lineSpacing);
  m_view->setTextContainerInset(QSizeF(0, 0));
  setFocusProxy(m_view);

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, topMargin, 0, 0);
  column->setSpacing(6);
  column->addWidget(m_heading);
  column->addWidget(m_details);
  column->addSpacing(10);
  column->addWidget(m_view, 1);
  setFontSize(16);
}

void EditorPane::setFontSize(int points) {
  m_view->setFont(textFont(points));
  layOutColumn();
}

bool EditorPane::leave() {
  if (!save()) return false;
  const QLJournalEntryFile* entry = m_session.activeEntry();
  if (entry && entry->fileURLForEntryProperties() && text().isEmpty() && !entry->string().isEmpty())
    Q_EMIT emptiedEntryLeft(entry->uuid());
  return true;
}

bool EditorPane::open(std::shared_ptr<QLJournalEntryFile> entry) {
  if (!leave()) return false;
  dismissOwnNotice();
  // They may be others by the time that one is typed.
  m_session.tags().forget();
  {
    const QScopedValueRollback opening(m_isOpening, true);
    m_session.open(std::move(entry));
  }
  m_status.setState({});
  showHeading();
  showWords();
  return true;
}

bool EditorPane::beginEntry() {
  if (!leave()) return false;
  clear();
  return true;
}

void EditorPane::clear() {
  m_saveTimer.stop();
  const QScopedValueRollback opening(m_isOpening, true);
  m_session.close();
  m_status.setState({});
  showHeading();
  showWords();
}

bool EditorPane::save() {
  m_saveTimer.stop();
  commitComposition();
  if (!m_session.isUnsaved()) return true;
  Error error;
  if (!m_session.save(/*force=*/false, &error)) {
    m_status.setState(u"Not saved"_s);
    say(error.localizedDescription, {{u"Try again"_s, [this] { save(); }}});
    return false;
  }
  m_status.setState(text().isEmpty() ? QString() : u"Saved"_s);
  const QLJournalEntryFile* entry = m_session.activeEntry();
  if (!entry) return true;
  if (const auto& merge = entry->lastMerge(); merge && merge->hasClash)
    say(u"Another program changed the same words; both versions are in the text."_s,
        {{u"Keep mine"_s, [this, ours = merge->ours] { replaceText(ours); }},
         {u"Keep the other"_s, [this, theirs = merge->theirs] { replaceText(theirs); }}});
  showHeading();
  if (entry->fileURLForEntryProperties()) Q_EMIT entrySaved(entry->uuid());
  return true;
}

// As the person would, with a step that can be undone.
void EditorPane::replaceText(const QString& text) {
  m_view->updateString(text);
  textDidChange();
}

void EditorPane::refresh() {
  if (!m_session.activeEntry()) return;
  Error error;
  if (!m_session.refresh(&error) && !m_session.isUnsaved()) {
    say(u"This entry was deleted by another program."_s, {{u"Keep it"_s, [this] {
                                                             textDidChange();
                                                             save();
                                                           }}});
    return;
  }
  showHeading();
  showWords();
}

void EditorPane::say(const QString& text, const QList<NoticeBar::Action>& actions) {
  m_ownNotice = text;
  m_status.notices().show(text, actions);
}

// What others said stays: how a deletion is taken back, above all.
void EditorPane::dismissOwnNotice() {
  if (m_status.notices().text() == m_ownNotice) m_status.notices().dismiss();
}

QString EditorPane::title() const {
  return m_heading->text();
}

QString EditorPane::details() const {
  return m_details->text();
}

QString EditorPane::text() const {
  return m_view->string();
}

void EditorPane::setText(const QString& text) {
  // Another entry's undo is none of this one's; what came into this one can be undone.
  if (m_isOpening || m_view->string().isEmpty())
    m_view->setString(text);
  else
    m_view->updateString(text);
}

void EditorPane::commitComposition() {
  m_view->commitComposition();
}

void EditorPane::textDidChange() {
  m_session.textDidChange();
  m_status.setState(u"Edited"_s);
  showWords();
  m_saveTimer.start();
}

void EditorPane::showHeading() {
  const QLJournalEntryFile* entry = m_session.activeEntry();
  const QDateTime time = entry ? localTime(entry->creationDate(), entry->timeZone()) : QDateTime::currentDateTime();
  m_heading->setText(locale().toString(time.date(), QLocale::LongFormat));
  QStringList details{clockTime(time.time(), locale())};
  if (!entry) details = {u"New entry"_s};
  for (const QString& part : m_place.metadataText().split(u"  •  "_s, Qt::SkipEmptyParts)) details << part;
  m_details->setText(details.join(u" · "_s));
}

void EditorPane::showWords() {
  const int count = wordCount(text());
  m_status.setWords(count == 1 ? u"1 word"_s : u"%1 words"_s.arg(locale().toString(count)));
}

void EditorPane::layOutColumn() {
  const double widest = QFontMetricsF(m_view->font()).averageCharWidth() * charactersInColumn;
  const double room = width();
  const double margin = std::clamp((room - widest) / 3, double{narrowestMargin}, double{widestMargin});
  const double end = std::max<double>(narrowestMargin, room - margin - widest);
  layout()->setContentsMargins(static_cast<int>(margin), topMargin, static_cast<int>(end), 0);
}

void EditorPane::resizeEvent(QResizeEvent*) {
  layOutColumn();
}

void EditorPane::applyColors() {
  const JournalColors colors = JournalColors::current();
  const auto color = [](QWidget& widget, const QColor& text) {
    QPalette own = widget.palette();
    own.setColor(QPalette::WindowText, text);
    own.setColor(QPalette::Text, text);
    widget.setPalette(own);
  };
  color(*m_heading, colors.text);
  color(*m_details, colors.dim);
  color(*m_view, colors.text);
}

}  // namespace quillo
