#include "journal/editor/EntryDetailsView.h"

#include "controls/Fonts.h"
#include "controls/look/JournalColors.h"
#include "controls/look/JournalStyle.h"
#include "journal/editor/SuggestingField.h"
#include "journal/model/DetailChanges.h"
#include "journal/views/MonthView.h"
#include "qlcore/EntryTime.h"

#include <QDateTimeEdit>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWidgetAction>

#include <algorithm>
#include <chrono>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto pauseBeforeChange = 600ms;
// In points.
constexpr int widthForTwo = 440;

// Of the locale, with all digits of the year, and without seconds.
QString readingFormat(const QLocale& locale) {
  QString date = locale.dateFormat(QLocale::ShortFormat);
  if (!date.contains(u"yyyy"_s)) date.replace(u"yy"_s, u"yyyy"_s);
  QString time = locale.timeFormat(QLocale::ShortFormat);
  if (const qsizetype seconds = time.indexOf(u"ss"_s); seconds > 0) time.remove(seconds - 1, 3);
  return date + u"  "_s + time.remove(u't').trimmed();
}

// A clock's, wherever that is: as UTC, every reading exists.
QDateTime readingOf(const EntryDetails& details) {
  const QDateTime local = localTime(details.creationDate, details.timeZone);
  return {local.date(), local.time(), Qt::UTC};
}

QStringList matching(const QStringList& tags, const QString& text, const QStringList& taken) {
  constexpr qsizetype most = 8;
  const QString sought = text.startsWith(u'#') ? text.sliced(1) : text;
  QStringList found;
  for (const QString& tag : tags) {
    if (found.size() >= most) break;
    const bool isWhole = tag.compare(sought, Qt::CaseInsensitive) == 0;
    if (!sought.isEmpty() && !isWhole && tag.startsWith(sought, Qt::CaseInsensitive) &&
        !taken.contains(tag, Qt::CaseInsensitive))
      found << tag;
  }
  return found;
}

}  // namespace

EntryDetailsView::EntryDetailsView(std::function<QStringList()> tags, QWidget* parent)
    : QFrame(parent), m_tagsInUse(std::move(tags)), m_grid(new QGridLayout(this)) {
  setObjectName(u"details"_s);
  m_pause.setSingleShot(true);
  m_pause.setInterval(pauseBeforeChange);
  buildFields();
  connectFields();
  m_grid->setContentsMargins(14, 12, 14, 12);
  m_grid->setHorizontalSpacing(8);
  m_grid->setVerticalSpacing(8);
  layOut(/*isWide=*/true);
  applyColors();
}

void EntryDetailsView::buildFields() {
  m_when = new QDateTimeEdit(this);
  m_when->setTimeSpec(Qt::UTC);
  m_when->setDateRange(QDate(100, 1, 1), QDate(9999, 12, 31));
  // A mirrored field would show the parts of the format in the opposite order.
  m_when->setLayoutDirection(Qt::LeftToRight);
  m_when->setDisplayFormat(readingFormat(locale()));
  m_when->setButtonSymbols(QAbstractSpinBox::NoButtons);
  m_when->setKeyboardTracking(false);
  m_when->setAccessibleName(u"Date and time"_s);
  m_day = new QToolButton(this);
  m_day->setText(u"\u25BE"_s);
  m_day->setToolTip(u"Choose the day"_s);
  m_day->setAccessibleName(u"Choose the day"_s);
  m_zone = new SuggestingField(
      SuggestingField::Kind::One, [](const QString& text) { return zonesNamed(text); }, this);
  m_zone->setAccessibleName(u"Time zone"_s);
  m_zone->setToolTip(u"Time zone; the clock reads the same in another one"_s);
  m_tags = new SuggestingField(
      SuggestingField::Kind::List,
      [this](const QString& text) { return matching(m_tagsInUse(), text, tagsOfLine(m_tags->text())); }, this);
  m_tags->setAccessibleName(u"Tags"_s);
  m_tags->setPlaceholderText(u"None; with commas between"_s);
  m_place = new SuggestingField(
      SuggestingField::Kind::One,
      [this](const QString& text) {
        m_found = placesNamed(text, m_formatter);
        QStringList titles;
        for (const FoundPlace& place : std::as_const(m_found)) titles << place.title;
        return titles;
      },
      this);
  m_place->setAccessibleName(u"Place"_s);
  m_place->setPlaceholderText(u"Find a town"_s);
  m_name = new QLineEdit(this);
  m_name->setAccessibleName(u"Name of the place"_s);
  m_name->setToolTip(u"What the place is called in the journal"_s);
  m_buttons = new QWidget(this);
  m_noPlace = new QPushButton(u"No Place"_s);
  m_done = new QPushButton(u"Done"_s);
  auto* buttons = new QHBoxLayout(m_buttons);
  buttons->setContentsMargins(0, 0, 0, 0);
  buttons->addWidget(m_noPlace);
  buttons->addStretch(1);
  buttons->addWidget(m_done);
  const QString titles[] = {u"When"_s, u"Zone"_s, u"Tags"_s, u"Place"_s, u"Called"_s};
  QWidget* const fields[] = {m_when, m_zone, m_tags, m_place, m_name};
  for (size_t i = 0; i < std::size(titles); ++i) {
    m_labels[i] = new QLabel(titles[i], this);
    m_labels[i]->setFont(textFont(12));
    m_labels[i]->setBuddy(fields[i]);
  }
  for (QWidget* field : {static_cast<QWidget*>(m_when), static_cast<QWidget*>(m_day), static_cast<QWidget*>(m_zone),
                         static_cast<QWidget*>(m_tags), static_cast<QWidget*>(m_place), static_cast<QWidget*>(m_name),
                         static_cast<QWidget*>(m_noPlace), static_cast<QWidget*>(m_done)})
    field->setFont(textFont(13));
  QWidget* before = m_when;
  for (QWidget* next : {static_cast<QWidget*>(m_day), static_cast<QWidget*>(m_zone), static_cast<QWidget*>(m_tags),
                        static_cast<QWidget*>(m_place), static_cast<QWidget*>(m_name), static_cast<QWidget*>(m_noPlace),
                        static_cast<QWidget*>(m_done)})
    setTabOrder(std::exchange(before, next), next);
}

void EntryDetailsView::connectFields() {
  connect(&m_pause, &QTimer::timeout, this, &EntryDetailsView::takeReading);
  connect(m_when, &QDateTimeEdit::dateTimeChanged, this, [this] {
    if (!m_isFilling) m_pause.start();
  });
  connect(m_when, &QDateTimeEdit::editingFinished, this, &EntryDetailsView::takeReading);
  m_when->installEventFilter(this);
  m_name->installEventFilter(this);
  connect(m_day, &QToolButton::clicked, this, &EntryDetailsView::chooseDay);
  connect(m_tags, &QLineEdit::editingFinished, this, &EntryDetailsView::takeTags);
  const auto onTaking = [this](SuggestingField* field, void (EntryDetailsView::*take)(Takes)) {
    connect(field, &SuggestingField::chosen, this, [this, take] { (this->*take)(Takes::WholeName); });
    connect(field, &QLineEdit::returnPressed, this, [this, take] { (this->*take)(Takes::FirstFound); });
    connect(field, &QLineEdit::editingFinished, this, [this, take] { (this->*take)(Takes::WholeName); });
  };
  onTaking(m_zone, &EntryDetailsView::takeZone);
  onTaking(m_place, &EntryDetailsView::takePlace);
  connect(m_name, &QLineEdit::editingFinished, this, &EntryDetailsView::takeName);
  connect(m_noPlace, &QPushButton::clicked, this, [this] {
    m_place->clear();
    takePlace(Takes::WholeName);
    m_place->setFocus();
  });
  connect(m_done, &QPushButton::clicked, this, &EntryDetailsView::left);
}

// In a narrow window each field has a line of its own.
void EntryDetailsView::layOut(bool isWide) {
  m_isWide = isWide;
  // Zone and name stand behind the fields that they belong to, or under them.
  const int second = isWide ? 3 : 0;
  const int zoneRow = isWide ? 0 : 1;
  const int tagsRow = zoneRow + 1;
  const int placeRow = tagsRow + 1;
  const int nameRow = isWide ? placeRow : placeRow + 1;
  const int lastColumn = isWide ? 4 : 2;
  const int zoneSpan = isWide ? 1 : 2;
  // What is in the grid already moves.
  const std::pair<int, int> labels[] = {{0, 0}, {zoneRow, second}, {tagsRow, 0}, {placeRow, 0}, {nameRow, second}};
  for (size_t i = 0; i < std::size(labels); ++i) m_grid->addWidget(m_labels[i], labels[i].first, labels[i].second);
  m_grid->addWidget(m_when, 0, 1);
  m_grid->addWidget(m_day, 0, 2);
  m_grid->addWidget(m_zone, zoneRow, second + 1, 1, zoneSpan);
  m_grid->addWidget(m_tags, tagsRow, 1, 1, lastColumn);
  m_grid->addWidget(m_place, placeRow, 1, 1, 2);
  m_grid->addWidget(m_name, nameRow, second + 1, 1, zoneSpan);
  m_grid->addWidget(m_buttons, nameRow + 1, 1, 1, lastColumn);
  m_grid->setColumnStretch(1, 1);
  m_grid->setColumnStretch(4, isWide ? 1 : 0);
}

void EntryDetailsView::resizeEvent(QResizeEvent*) {
  if (const bool isWide = width() >= widthForTwo; isWide != m_isWide) layOut(isWide);
}

void EntryDetailsView::setDetails(const EntryDetails& details) {
  m_details = details;
  const auto& place = details.location;
  m_town = place ? m_formatter.placeNameForLocation(*place) : QString();
  if (place && m_town.isEmpty()) m_town = QLLocationFormatter::coordinates(*place);
  const QScopedValueRollback filling(m_isFilling, true);
  // Not over what is being typed; where that counts already, it is not marked as such any more.
  const auto fill = [](QLineEdit& field, const QString& text) {
    if (field.hasFocus() && field.isModified()) return;
    const bool isWhole = !text.isEmpty() && field.selectedText() == field.text();
    field.setText(text);
    if (field.hasFocus() && isWhole) field.selectAll();
  };
  if (const QDateTime reading = readingOf(details); reading != m_when->dateTime()) {
    m_pause.stop();
    m_when->setDateTime(reading);
  }
  fill(*m_zone, details.timeZone);
  fill(*m_tags, lineOfTags(details.tags));
  fill(*m_place, m_town);
  fill(*m_name, place ? m_formatter.localLocationStringForLocation(*place) : QString());
  m_name->setEnabled(place.has_value());
  m_noPlace->setEnabled(place.has_value());
}

void EntryDetailsView::forgetTyping() {
  m_pause.stop();
  for (QLineEdit* field :
       {static_cast<QLineEdit*>(m_zone), static_cast<QLineEdit*>(m_tags), static_cast<QLineEdit*>(m_place), m_name})
    field->setModified(false);
  setDetails(m_details);
}

void EntryDetailsView::commit() {
  // A change that is told of fills the other fields; only one is being typed into.
  m_when->interpretText();
  takeReading();
  takeZone(Takes::WholeName);
  takeTags();
  takePlace(Takes::WholeName);
  takeName();
  forgetTyping();
}

void EntryDetailsView::beginEditing(Field field) {
  QWidget* const fields[] = {m_when, m_place, m_tags};
  fields[static_cast<size_t>(field)]->setFocus(Qt::ShortcutFocusReason);
  if (auto* line = qobject_cast<QLineEdit*>(fields[static_cast<size_t>(field)])) line->selectAll();
}

// Whoever hears of it shows what became of it; where nothing did, the fields are as before.
void EntryDetailsView::tell(const EntryDetails& after) {
  const EntryDetails before = m_details;
  forgetTyping();
  if (after != before) Q_EMIT changed(before, after);
}

void EntryDetailsView::takeReading() {
  m_pause.stop();
  const QDateTime reading = m_when->dateTime();
  if (!m_isFilling && reading != readingOf(m_details)) tell(withReading(m_details, reading.date(), reading.time()));
}

void EntryDetailsView::takeZone(Takes takes) {
  const QString text = m_zone->text().trimmed();
  if (text == m_details.timeZone) return;
  const QString found = text.isEmpty() ? QString() : zonesNamed(text, 1).value(0);
  const bool isMeant = takes == Takes::FirstFound ? !found.isEmpty() : found.compare(text, Qt::CaseInsensitive) == 0;
  tell(isMeant ? withZone(m_details, found) : m_details);
  if (takes == Takes::FirstFound && !isMeant && !text.isEmpty())
    Q_EMIT problemFound(u"There is no time zone of that name; Asia/Tokyo is one."_s);
}

void EntryDetailsView::takeTags() {
  if (m_tags->text() == lineOfTags(m_details.tags)) return;
  EntryDetails after = m_details;
  after.tags = tagsOfLine(m_tags->text());
  tell(after);
}

void EntryDetailsView::takePlace(Takes takes) {
  const QString text = m_place->text().trimmed();
  if (text == m_town) return;
  EntryDetails after = m_details;
  after.location.reset();
  if (text.isEmpty()) return tell(after);
  // What was offered for the text may be another one than the largest of its name.
  const QList<FoundPlace> found = m_found + placesNamed(text, m_formatter, 1);
  auto meant = std::find_if(found.begin(), found.end(), [&text](const FoundPlace& place) {
    return place.title.compare(text, Qt::CaseInsensitive) == 0;
  });
  if (meant == found.end() && takes == Takes::FirstFound && found.size() > m_found.size()) meant = found.end() - 1;
  if (meant != found.end()) {
    after.location = meant->location;
    return tell(after);
  }
  forgetTyping();
  if (takes == Takes::FirstFound) Q_EMIT problemFound(u"No town of that name is known."_s);
}

void EntryDetailsView::takeName() {
  if (!m_details.location || m_name->text() == m_formatter.localLocationStringForLocation(*m_details.location)) return;
  EntryDetails after = m_details;
  after.location->placeName = m_name->text().simplified();
  tell(after);
}

void EntryDetailsView::chooseDay() {
  QMenu menu(this);
  auto* page = new QWidget;
  auto* month = new MonthView;
  month->setSelectedDay(m_when->date());
  (new QVBoxLayout(page))->addWidget(month);
  auto* holder = new QWidgetAction(&menu);
  holder->setDefaultWidget(page);
  menu.addAction(holder);
  connect(month, &MonthView::dayActivated, &menu, [this, &menu](QDate day) {
    menu.close();
    m_when->setDate(day);
    takeReading();
  });
  QTimer::singleShot(0, month, [month] { month->setFocus(); });
  menu.exec(m_when->mapToGlobal(QPoint(0, m_when->height())));
  m_day->setFocus();
}

bool EntryDetailsView::eventFilter(QObject* watched, QEvent* event) {
  // Where there is no typing to take back, a change is: the key is the window's. Taking back a day is more use than
  // taking back a digit of it.
  const bool isUndo =
      event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent*>(event)->matches(QKeySequence::Undo);
  if (!isUndo || (watched == m_name && m_name->isUndoAvailable())) return QFrame::eventFilter(watched, event);
  event->ignore();
  return true;
}

void EntryDetailsView::keyPressEvent(QKeyEvent* event) {
  if (event->key() != Qt::Key_Escape) return QFrame::keyPressEvent(event);
  forgetTyping();
  m_when->setDateTime(readingOf(m_details));
  Q_EMIT left();
}

void EntryDetailsView::applyColors() {
  const JournalColors colors = JournalColors::current();
  const QString style = styleWithColors(
      u"#details { border: 1px solid %line; border-radius: 8px; background: %list }"
      "#details QLabel { color: %dim }"
      "#details > QLineEdit, #details > QDateTimeEdit { border: 1px solid %line; border-radius: 5px; padding: 4px 7px;"
      "  background: %paper; color: %text; selection-background-color: %accent; selection-color: %onAccent }"
      "#details > QLineEdit:focus, #details > QDateTimeEdit:focus { border: 2px solid %accent; padding: 3px 6px }"
      "#details > QLineEdit:disabled { color: %dim; background: %list }"
      "#details > QToolButton { border: 1px solid %line; border-radius: 5px; padding: 4px 7px; background: %paper;"
      "  color: %text }"
      "#details > QToolButton:focus { border: 2px solid %accent; padding: 3px 6px }"_s,
      colors);
  if (style != styleSheet()) setStyleSheet(style);
  for (SuggestingField* field : {m_zone, m_tags, m_place}) field->applyColors();
}

}  // namespace quillo
