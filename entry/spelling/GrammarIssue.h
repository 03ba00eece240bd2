#pragma once

#include "foundation/TextRange.h"

#include <QString>
#include <QStringList>

namespace quillo {

// Something about a paragraph's grammar or style.
struct GrammarIssue {
  TextRange range;  // in the paragraph
  QString message;  // one sentence for the user
  QStringList replacements;

  bool operator==(const GrammarIssue&) const = default;
};

}  // namespace quillo
