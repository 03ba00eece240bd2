#pragma once

#include "entry/session/EntryPlace.h"
#include "entry/session/EntrySession.h"
#include "entry/session/EntryText.h"
#include "entry/text/EntryTextServices.h"
#include "journal/editor/EntryDetailsView.h"
#include "journal/views/NoticeBar.h"

#include <QDate>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <optional>

class QLabel;

namespace quillo {

class EntryViewTextView;
class StatusRow;

// What the editor works with; it must outlive it.
struct EditorServices {
  EntrySessionServices session;
  EntryPlaceServices place;
  EntryTextServices text;
};

// An entry being written: its date, time, place, weather and tags, which can be changed, and its text in a comfortable
// column. Saves by itself a moment after the last key, and when the entry is left. What cannot be saved stays, is in a
// draft, and is said.
class EditorPane : public QWidget, private EntryText {
  Q_OBJECT

 public:
  // What is to be said goes into the row, which must outlive the pane.
  EditorPane(const EditorServices& services, StatusRow& status, QWidget* parent = nullptr);
  ~EditorPane() override;

  // Saves what is there and takes another entry in its place. False where it cannot be saved: then it stays.
  bool open(std::shared_ptr<QLJournalEntryFile> entry);
  // The same with an entry that begins now, where the settings may want its place looked up; or on another day, at this
  // time of the day.
  bool beginEntry(std::optional<QDate> day = std::nullopt);
  // Goes on with what an earlier process could not save.
  void restoreDraft() { m_session.restoreDraft(); }
  // False, said in the pane, where it cannot be saved.
  bool save();
  // Files of the journal have changed.
  void refresh();
  // The entry was deleted: nothing is left of it here.
  void clear();

  // Null where nothing is written yet.
  [[nodiscard]] const QLJournalEntryFile* entry() const { return m_session.activeEntry(); }
  [[nodiscard]] QString text() const override;
  [[nodiscard]] bool isUnsaved() const { return m_session.isUnsaved(); }
  [[nodiscard]] EntrySession& session() { return m_session; }
  [[nodiscard]] EntryViewTextView& textView() { return *m_view; }
  // The day, and time, place and weather, as they stand above the text.
  [[nodiscard]] QString title() const { return m_title; }
  [[nodiscard]] QString details() const { return m_detailsText; }
  // Shows the fields in which they are changed, with the keyboard in one; where they show already, it goes there.
  void editDetails(EntryDetailsView::Field field = EntryDetailsView::Field::When);
  void closeDetails();
  // What is being typed there counts.
  void commitDetails();
  [[nodiscard]] EntryDetailsView& detailsView() { return *m_detailsView; }
  // Takes back the last change of the details; false where there is none since the entry was opened.
  bool undoDetails();
  // Of the text, in points.
  void setFontSize(int points);

  // To be called when the application's palette has changed.
  void applyColors();

 Q_SIGNALS:
  // The journal has the entry as it is here.
  void entrySaved(const QString& identifier);
  // Its place in the order of entries is another now, or it has one for the first time.
  void entryMoved(const QString& identifier, QDate day);
  // An entry is left whose text was deleted, which its file still has; or one that was deleted elsewhere and edited
  // here is to go.
  void deletionWanted(const QString& identifier);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void setText(const QString& text) override;
  void commitComposition() override;

  void buildView();
  void connectView();
  void changeDetails(const EntryDetails& before, const EntryDetails& after);
  bool setDetails(const EntryDetails& details);
  void sayUnsaved(const Error& error);
  void tellSaved(bool isMoved);
  void forgetChanges();
  void lookForWeather(const EntryDetails& before, const EntryDetails& after);
  void lookForPlace();
  void placeDidChange();
  void showDetails();
  [[nodiscard]] QString placeText() const;
  void textDidChange();
  void replaceText(const QString& text);
  void showHeading();
  void showWords();
  void layOutColumn();
  bool leave();
  void say(const QString& text, const QList<NoticeBar::Action>& actions);
  void dismissOwnNotice();

  EntryPlace m_place;
  EntrySession m_session;
  EntryViewTextView* m_view;
  QLabel* m_heading;
  QLabel* m_details;
  EntryDetailsView* m_detailsView;
  StatusRow& m_status;
  QString m_title;
  QString m_detailsText;
  struct Change {
    EntryDetails before;
    EntryDetails after;
  };
  QList<Change> m_changes;  // of the details, since the entry was opened
  QString m_ownNotice;
  QTimer m_saveTimer;
  QTimer m_placeTimer;
  bool m_isOpening{false};
  // The journal would not take what is written; it is offered again when the journal changes.
  bool m_isRefused{false};
  // What is found belongs to the entry.
  bool m_looksForPlace{false};
  bool m_awaitsPlace{false};
};

}  // namespace quillo
