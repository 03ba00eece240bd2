#pragma once

#include <QString>

namespace quillo {

// The text of the `number`-th save: the number, then so much of one letter that a save takes a while and that a text
// made of two saves cannot pass for one.
inline QString savedText(int number) {
  const QChar letter(static_cast<char16_t>(u'a' + number % 26));
  return QString::number(number) + u' ' + QString(10'000 + number % 7 * 9'000, letter);
}

// The number of the save that `text` is whole from; -1 when there is none.
inline int numberOfSavedText(const QString& text) {
  bool isNumber = false;
  const int number = text.left(text.indexOf(u' ')).toInt(&isNumber);
  return isNumber && text == savedText(number) ? number : -1;
}

}  // namespace quillo
