#pragma once

#include "journal/model/JournalReader.h"
#include "journal/model/TimelineSource.h"
#include "qlcore/QLWeather.h"

#include <QHash>
#include <QSet>

#include <functional>
#include <memory>
#include <optional>

namespace quillo {

// The entries that a question finds, as a timeline: how many there are on which day, the entries themselves in pages as
// they are looked at. What is shown stays until the answer to a new question is there; of that the first page is shown
// at once, and the others when they have been counted. Main thread only.
class Timeline : public TimelineSource {
  Q_OBJECT

 public:
  // The reader must outlive the timeline. `weatherText` says a weather as the settings want it.
  Timeline(JournalReader& reader, std::function<QString(const QLWeather&)> weatherText);

  // Shows what the question finds; its order, offset and limit play no part.
  void show(const JournalQuestion& question);
  // Asks again: the journal has changed.
  void reload();
  // Shows nothing until the next answer: it is another journal.
  void clear();

  // Of the question that is shown; of its first page alone while isCounted() is false.
  [[nodiscard]] int total() const { return m_total; }
  [[nodiscard]] bool isCounted() const { return m_isCounted; }
  // False until the first answer.
  [[nodiscard]] bool isKnown() const { return m_isKnown; }

  [[nodiscard]] const QList<TimelineDay>& days() const override { return m_days; }
  [[nodiscard]] const TimelineRow* row(int row) override;
  [[nodiscard]] int rowOfEntry(const QString& identifier) const override;

 private:
  static constexpr int pageSize = 32;
  static constexpr int mostPages = 48;

  struct Page {
    QList<TimelineRow> rows;
    quint64 lastUse{0};
  };
  // An answer that is put together before it is shown.
  struct Draft {
    std::unique_ptr<QObject> asker;
    std::optional<QList<TimelineDay>> days;
    QHash<int, Page> pages;
    int pagesWanted{0};
    bool isFirstPageShown{false};
  };
  void request(int page);
  void fetch(QObject& asker, JournalQuestion question, int page, std::function<void(Page)> fetched);
  void keep(int page, Page content);
  void draftDidGrow();
  void showFirstPage();
  void showDraft();
  void setDays(const QList<TimelineDay>& days);
  [[nodiscard]] TimelineRow rowFor(const IndexedEntry& entry) const;
  [[nodiscard]] Page pageFor(const JournalAnswer& answer);

  JournalReader& m_reader;
  std::function<QString(const QLWeather&)> m_weatherText;
  JournalQuestion m_question;
  QList<TimelineDay> m_days;
  int m_total{0};
  bool m_isKnown{false};
  bool m_isCounted{false};
  bool m_isOther{true};  // than what is shown
  QHash<int, Page> m_pages;
  QSet<int> m_requested;
  // Of the question that is shown.
  std::unique_ptr<QObject> m_asker{std::make_unique<QObject>()};
  Draft m_draft;
  JournalQuestion m_askedQuestion;
  quint64 m_uses{0};
  int m_lastLookedAt{0};
};

}  // namespace quillo
