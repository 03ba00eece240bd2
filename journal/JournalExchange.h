#pragma once

#include "exchange/ExportFormat.h"
#include "journal/exchange/BackgroundWork.h"
#include "qlcore/QLWeather.h"

#include <QObject>
#include <QString>

#include <functional>

class QWidget;

namespace quillo {

class JournalLibrary;
class JournalOverview;
class JournalSearch;
class JournalWindowView;
class OpenPanel;
class Timeline;
struct ImportOutcome;

// What export and import need of the program.
struct JournalExchangeServices {
  OpenPanel& openPanel;
  // What draws a PDF with the settings of now.
  std::function<DocumentMaker()> pdf;
  std::function<bool()> makesTagsOfHashtags;
  // Shows a file or folder where it lies, in the desktop's file manager. `failed` is called, perhaps later, where none
  // is installed.
  std::function<void(const QString& path, std::function<void()> failed)> showFile;
};

// Export, import and printing from the journal's window: their dialogs, and what the window says of what came of them.
class JournalExchange : public QObject {
  Q_OBJECT

 public:
  // What of the window it looks at; all must outlive it.
  struct Parts {
    JournalLibrary& library;
    const JournalSearch& search;
    const JournalOverview& overview;
    const Timeline& timeline;
    JournalWindowView& view;
    // Where damaged entries are named.
    std::function<void()> showDamaged;
  };

  JournalExchange(QWidget& window, const JournalExchangeServices& services, const Parts& parts);

  // `format` is the name of the one to begin with. What is not saved yet is saved before.
  void beginExport(const QString& format = QStringLiteral("markdown"));
  void beginImport();
  // Says what the last import was, with a button that takes it back.
  void offerUndoOfImport();
  // What the window shows, with the desktop's dialog before.
  void print(const std::function<QString(const QLWeather&)>& weatherText);

 private:
  void imported(const ImportOutcome& outcome);
  void undoImport();
  void showProgressOfUndo(qint64 done, qint64 total);
  // "3 entries imported".
  [[nodiscard]] QString inWords(qint64 count, const QString& what) const;

  QWidget& m_window;
  JournalExchangeServices m_services;
  Parts m_parts;
  BackgroundWork m_undo;
  QString m_undoNotice;  // as it is shown
};

}  // namespace quillo
