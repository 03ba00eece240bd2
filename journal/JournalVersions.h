#pragma once

#include "journal/exchange/BackgroundWork.h"
#include "journal/versions/VersionsDialog.h"
#include "qlcore/conflicts/EntryVersions.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>

#include <functional>

namespace quillo {

class JournalLibrary;
class JournalWindowView;

// The entries of the journal of which there are several versions: the window says so above such an entry, shows the
// versions side by side, and does with them what the person decides.
class JournalVersions : public QObject {
  Q_OBJECT

 public:
  // All must outlive it. `showEntry` shows one; false where it cannot be read.
  JournalVersions(QWidget& window, JournalLibrary& library, JournalWindowView& view,
                  std::function<bool(const QString& identifier)> showEntry);

  // How many entries there are with several versions.
  [[nodiscard]] qsizetype count() const { return m_entries.size(); }
  // To be called when another entry, or something else, is shown.
  void followEntry();
  // Goes to the next of them. One whose own file is damaged cannot be shown: its versions are, at once.
  void showNext();
  // Of the entry that is shown.
  void compare();

 Q_SIGNALS:
  void countDidChange();

 private:
  struct Reading;
  struct Outcome;
  void list();
  [[nodiscard]] QString shownIdentifier() const;
  [[nodiscard]] QList<ConflictedEntry>::const_iterator find(const QString& identifier) const;
  void read(const QString& identifier);
  void show(const Reading& reading);
  void carryOut(const VersionDecision& decision);
  void carriedOut(const Outcome& outcome);
  void refreshEntry(const QStringList& identifiers);

  QWidget& m_window;
  JournalLibrary& m_library;
  JournalWindowView& m_view;
  std::function<bool(const QString&)> m_showEntry;
  QList<ConflictedEntry> m_entries;
  bool m_isListing{false};
  bool m_isListOutdated{false};
  QString m_last;  // that was gone to
  QPointer<VersionsDialog> m_dialog;
  BackgroundWork m_work;
};

}  // namespace quillo
