#pragma once

#include "foundation/TextRange.h"

#include <QList>
#include <QString>
#include <QStringView>

namespace quillo {

// The words of a line that are worth a look in a dictionary, in order. Left out: hashtags, "@" names, addresses of any
// kind (URLs, mail, host and file names, and everything else joined by full stops), and words that hold a digit or an
// underscore. An apostrophe between letters belongs to the word.
[[nodiscard]] QList<TextRange> wordsToCheck(QStringView line);

[[nodiscard]] bool isApostrophe(QChar c);

// The word as dictionaries hold it: composed characters, the plain apostrophe, no soft hyphens.
[[nodiscard]] QString dictionaryForm(QStringView word);

}  // namespace quillo
