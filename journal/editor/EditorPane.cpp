#include "journal/editor/EditorPane.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"
#include "entry/text/EntryViewTextView.h"
#include "journal/editor/LineSpacing.h"
#include "journal/model/ClockTime.h"
#include "journal/model/DetailChanges.h"
#include "journal/views/StatusRow.h"
#include "qlcore/EntryTime.h"
#include "qlcore/QLJournalEntryFile.h"

#include <QDateTime>
#include <QFontMetricsF>
#include <QLabel>
#include <QScopedValueRollback>
#include <QTextBoundaryFinder>
#include <QTextDocument>
#include <QTextOption>
#include <QVBoxLayout>

#include <chrono>
#include <utility>

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

// In what is said above the text: to the field that changes it.
const QString whenLink = u"when"_s;
const QString placeLink = u"place"_s;
const QString tagsLink = u"tags"_s;

QString linkTo(const QString& target, const QString& text, const QColor& color) {
  return u"<a href=\"%1\" style=\"text-decoration: none; color: %2\">%3</a>"_s.arg(target, color.name(),
                                                                                   text.toHtmlEscaped());
}

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
      m_detailsView(new EntryDetailsView([this] { return m_session.tags().tags(); }, this)),
      m_status(status) {
  buildView();
  connectView();
  m_view->awakeFromNib();
  applyColors();
  showHeading();
}

void EditorPane::connectView() {
  m_saveTimer.setSingleShot(true);
  m_saveTimer.setInterval(pauseBeforeSave);
  connect(&m_saveTimer, &QTimer::timeout, this, &EditorPane::save);
  connect(m_view, &EntryViewTextView::textDidChange, this, &EditorPane::textDidChange);
  // Not before the window shows the entry.
  m_placeTimer.setSingleShot(true);
  m_placeTimer.setInterval(0);
  connect(&m_placeTimer, &QTimer::timeout, this, &EditorPane::lookForPlace);
  connect(&m_place, &EntryPlace::metadataDidChange, this, &EditorPane::placeDidChange);
  connect(&m_place, &EntryPlace::awaitsPlaceDidChange, this, [this](bool awaits) {
    m_awaitsPlace = awaits;
    showHeading();
  });
  m_view->setCompletionSource([this] { return m_session.tags().tags(); });
  connect(&m_session.tags(), &JournalTags::didBecomeKnown, m_view, &EntryViewTextView::completionSourceDidChange);
  for (QLabel* label : {m_heading, m_details})
    connect(label, &QLabel::linkActivated, this, [this](const QString& link) {
      using Field = EntryDetailsView::Field;
      editDetails(link == placeLink ? Field::Place : link == tagsLink ? Field::Tags : Field::When);
    });
  connect(m_detailsView, &EntryDetailsView::changed, this, &EditorPane::changeDetails);
  connect(m_detailsView, &EntryDetailsView::problemFound, this, [this](const QString& text) { say(text, {}); });
  connect(m_detailsView, &EntryDetailsView::left, this, &EditorPane::closeDetails);
}

EditorPane::~EditorPane() {
  // Whoever closes the window has saved; what failed is in the draft.
  m_saveTimer.stop();
}

void EditorPane::buildView() {
  m_heading->setFont(textFont(22, QFont::DemiBold));
  m_details->setFont(textFont(13));
  for (QLabel* label : {m_heading, m_details}) {
    label->setTextFormat(Qt::RichText);
    label->setWordWrap(true);
    label->setContextMenuPolicy(Qt::NoContextMenu);
    label->setToolTip(u"Change date, tags and place (Ctrl+I)"_s);
  }
  m_detailsView->hide();
  m_view->setAccessibleName(u"Entry"_s);
  setLineSpacing(*m_view, lineSpacing);
  // Each paragraph stands where its script begins.
  QTextOption option = m_view->document()->defaultTextOption();
  option.setTextDirection(Qt::LayoutDirectionAuto);
  m_view->document()->setDefaultTextOption(option);
  m_view->setTextContainerInset(QSizeF(0, 0));
  setFocusProxy(m_view);

  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, topMargin, 0, 0);
  column->setSpacing(6);
  column->addWidget(m_heading);
  column->addWidget(m_details);
  column->addSpacing(4);
  column->addWidget(m_detailsView);
  column->addSpacing(6);
  column->addWidget(m_view, 1);
  setFontSize(16);
}

void EditorPane::setFontSize(int points) {
  m_view->setFont(textFont(points));
  layOutColumn();
}

bool EditorPane::leave() {
  commitDetails();
  if (!save()) return false;
  const QLJournalEntryFile* entry = m_session.activeEntry();
  if (entry && entry->fileURLForEntryProperties() && text().isEmpty() && !entry->string().isEmpty())
    Q_EMIT deletionWanted(entry->uuid());
  return true;
}

bool EditorPane::open(std::shared_ptr<QLJournalEntryFile> entry) {
  if (!leave()) return false;
  // They may be others by the time that one is typed.
  m_session.tags().forget();
  forgetChanges();
  {
    const QScopedValueRollback opening(m_isOpening, true);
    m_session.open(std::move(entry));
  }
  m_status.setState({});
  showDetails();
  showWords();
  return true;
}

bool EditorPane::beginEntry(std::optional<QDate> day) {
  if (!leave()) return false;
  clear();
  if (day && *day != QDate::currentDate()) {
    const EntryDetails now = m_session.details();
    return setDetails(withReading(now, *day, localTime(now.creationDate, now.timeZone).time()));
  }
  if (m_place.isAutomatic()) m_placeTimer.start();
  return true;
}

void EditorPane::clear() {
  m_saveTimer.stop();
  forgetChanges();
  {
    const QScopedValueRollback opening(m_isOpening, true);
    m_session.close();
  }
  m_status.setState({});
  showDetails();
  showWords();
}

void EditorPane::forgetChanges() {
  m_isRefused = false;
  dismissOwnNotice();
  m_detailsView->forgetTyping();
  m_changes.clear();
  m_placeTimer.stop();
  m_looksForPlace = false;
  m_place.forget();
}

bool EditorPane::save() {
  m_saveTimer.stop();
  commitComposition();
  if (!m_session.isUnsaved()) return true;
  const QLJournalEntryFile* before = m_session.activeEntry();
  const bool isNew = !before || !before->fileURLForEntryProperties();
  Error error;
  if (!m_session.save(/*force=*/false, &error)) {
    sayUnsaved(error);
    return false;
  }
  if (std::exchange(m_isRefused, false)) dismissOwnNotice();
  m_status.setState(text().isEmpty() ? QString() : u"Saved"_s);
  const QLJournalEntryFile* entry = m_session.activeEntry();
  if (!entry) return true;
  if (const auto& merge = entry->lastMerge(); merge && merge->hasClash)
    say(u"Another program changed the same words; both versions are in the text."_s,
        {{u"Keep mine"_s, [this, ours = merge->ours] { replaceText(ours); }},
         {u"Keep the other"_s, [this, theirs = merge->theirs] { replaceText(theirs); }}});
  if (m_session.hasBroughtEntryBack())
    say(u"This entry was deleted elsewhere; what you wrote has brought it back."_s,
        {{u"Delete it"_s, [this, identifier = entry->uuid()] { Q_EMIT deletionWanted(identifier); }}});
  showDetails();
  if (entry->fileURLForEntryProperties()) tellSaved(/*isMoved=*/isNew);
  return true;
}

void EditorPane::sayUnsaved(const Error& error) {
  m_isRefused = true;
  m_status.setState(u"Not saved"_s);
  say(error.localizedDescription, {{u"Try again"_s, [this] { save(); }}});
}

void EditorPane::tellSaved(bool isMoved) {
  const QLJournalEntryFile& entry = *m_session.activeEntry();
  const QString identifier = entry.uuid();
  const QDate day = localTime(entry.creationDate(), entry.timeZone()).date();
  Q_EMIT entrySaved(identifier);
  if (isMoved) Q_EMIT entryMoved(identifier, day);
}

// As the person would, with a step that can be undone.
void EditorPane::replaceText(const QString& text) {
  m_view->updateString(text);
  textDidChange();
}

void EditorPane::refresh() {
  // The journal's folder may have come back.
  if (m_isRefused && m_session.isUnsaved() && !save()) return;
  if (!m_session.activeEntry()) return;
  Error error;
  if (!m_session.refresh(&error) && !m_session.isUnsaved()) {
    say(u"This entry was deleted by another program."_s, {{u"Keep it"_s, [this] {
                                                             textDidChange();
                                                             save();
                                                           }}});
    return;
  }
  showDetails();
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

void EditorPane::editDetails(EntryDetailsView::Field field) {
  m_detailsView->setDetails(m_session.details());
  m_detailsView->show();
  m_detailsView->beginEditing(field);
  // Asked for now, they are there when the first is typed.
  (void)m_session.tags().tags();
}

void EditorPane::commitDetails() {
  if (m_detailsView->isVisibleTo(this)) m_detailsView->commit();
}

void EditorPane::closeDetails() {
  commitDetails();
  m_detailsView->hide();
  m_view->setFocus();
}

void EditorPane::changeDetails(const EntryDetails& before, const EntryDetails& after) {
  // The text may have brought tags meanwhile.
  if (!save()) return;
  const EntryDetails now = m_session.details();
  const EntryDetails changed = withoutStaleWeather(now, now.withChange(before, after));
  if (changed == now || !setDetails(changed)) return showDetails();
  m_changes.append({now, changed});
  lookForWeather(now, changed);
  if (const QString text = changeText(now, changed, this->text(), locale()); !text.isEmpty())
    say(text, {{u"Undo"_s, [this] { undoDetails(); }}});
}

bool EditorPane::undoDetails() {
  if (m_changes.isEmpty()) return false;
  const Change change = m_changes.takeLast();
  m_looksForPlace = false;
  m_place.setIsWanted(false);
  dismissOwnNotice();
  setDetails(m_session.details().withChange(change.after, change.before));
  return true;
}

// As they are then, whether or not they could be saved.
bool EditorPane::setDetails(const EntryDetails& details) {
  const Date before = m_session.details().creationDate;
  Error error;
  const bool isSaved = m_session.setDetails(details, &error);
  if (!isSaved) sayUnsaved(error);
  showDetails();
  const QLJournalEntryFile* entry = m_session.activeEntry();
  if (!isSaved || !entry || !entry->fileURLForEntryProperties()) return isSaved;
  m_status.setState(u"Saved"_s);
  tellSaved(/*isMoved=*/entry->creationDate() != before);
  return true;
}

// Only that of now can be looked up, and what is being looked up is not for another place or day.
void EditorPane::lookForWeather(const EntryDetails& before, const EntryDetails& after) {
  if (after.weather == before.weather && after.location == before.location && isOfNow(after, Date::now())) return;
  m_placeTimer.stop();
  m_place.stopLocating();
  m_looksForPlace = after.location && !after.weather && isOfNow(after, Date::now());
  m_place.setIsWanted(m_looksForPlace);
  if (m_looksForPlace) m_place.updateWeatherFromLocation();
}

void EditorPane::lookForPlace() {
  m_looksForPlace = true;
  m_place.setIsWanted(true);
  m_place.fetchLocationAndWeatherIfNeeded();
}

void EditorPane::placeDidChange() {
  if (m_looksForPlace && !m_isOpening) {
    m_session.placeDidChange();
    if (m_session.isUnsaved()) m_saveTimer.start();
  }
  showDetails();
}

void EditorPane::showDetails() {
  showHeading();
  if (m_detailsView->isVisibleTo(this)) m_detailsView->setDetails(m_session.details());
}

QString EditorPane::placeText() const {
  if (m_awaitsPlace && !m_place.location()) return u"Finding the place\u2026"_s;
  return m_place.metadataText().split(u"  \u2022  "_s, Qt::SkipEmptyParts).join(u" \u00B7 "_s);
}

void EditorPane::showHeading() {
  const QLJournalEntryFile* entry = m_session.activeEntry();
  const EntryDetails details = m_session.details();
  const QDateTime time = localTime(details.creationDate, details.timeZone);
  const QString clock = clockTime(time.time(), locale());
  const bool isNew = !entry || !entry->fileURLForEntryProperties();
  m_title = locale().toString(time.date(), QLocale::LongFormat);
  QStringList parts{!isNew ? clock : entry ? u"New entry \u00B7 "_s + clock : u"New entry"_s};
  const QString place = placeText();
  if (!place.isEmpty()) parts << place;
  m_detailsText = parts.join(u" \u00B7 "_s);

  const JournalColors colors = JournalColors::current();
  m_heading->setText(linkTo(whenLink, m_title, colors.text));
  QStringList links{linkTo(whenLink, parts.first(), colors.dim)};
  if (!place.isEmpty()) links << linkTo(placeLink, place, colors.dim);
  if (!details.tags.isEmpty()) links << linkTo(tagsLink, lineOfTags(details.tags), colors.accent);
  // The line's own direction, whatever the script of its first tag.
  const QString direction = layoutDirection() == Qt::RightToLeft ? u"rtl"_s : u"ltr"_s;
  m_details->setText(u"<div dir=\"%1\">%2</div>"_s.arg(direction, links.join(u" \u00B7 "_s)));
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
  m_detailsView->applyColors();
  showHeading();
}

}  // namespace quillo
