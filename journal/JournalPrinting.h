#pragma once

#include "journal/model/JournalReader.h"
#include "qlcore/QLWeather.h"

#include <QString>

#include <functional>

class QWidget;

namespace quillo {

// Puts the entries that a question finds on paper, oldest first, with the print dialog before and
// progress that can be cancelled meanwhile.
class JournalPrinting {
 public:
  // All must outlive it.
  JournalPrinting(QWidget& window, JournalReader& reader, std::function<QString(const QLWeather&)> weatherText);

  // What happened, in one sentence; empty where the person thought better of it.
  QString print(JournalQuestion question);

 private:
  template <typename Work>
  QString run(JournalQuestion question, Work work);

  QWidget& m_window;
  JournalReader& m_reader;
  std::function<QString(const QLWeather&)> m_weatherText;
};

}  // namespace quillo
