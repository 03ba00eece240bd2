#pragma once

#include "foundation/Date.h"
#include "foundation/PropertyListValue.h"

namespace quillo {

// Sixty keys of the kinds that settings have.
inline PropertyListValue sampleSettings() {
  using namespace Qt::StringLiterals;
  PropertyListDictionary list;
  for (int i = 0; i < 10; ++i) {
    const QString n = QString::number(i);
    list[u"ReminderSetting"_s + n] = i % 2 == 0;
    list[u"WindowPosition"_s + n] = i * 137;
    list[u"Opacity"_s + n] = 0.1 * i;
    list[u"JournalLocation"_s + n] = u"/home/someone/Documents/My Journal "_s + n + u".quillojournal"_s;
    list[u"LastUsed"_s + n] = Date(6e8 + i);
    list[u"Shortcut"_s + n] = PropertyListDictionary{{u"keyCode"_s, i}, {u"modifierFlags"_s, 1 << 20}};
  }
  return list;
}

// Entries, each about 300 bytes as XML and half of that in the other forms.
inline PropertyListValue sampleEntries(int count) {
  using namespace Qt::StringLiterals;
  PropertyListArray list;
  for (int i = 0; i < count; ++i) {
    const QString n = QString::number(i);
    list << PropertyListDictionary{{u"title"_s, u"An entry with the number "_s + n},
                                   {u"created"_s, Date(6e8 + i)},
                                   {u"weight"_s, i / 7.0},
                                   {u"tags"_s, PropertyListArray{u"one"_s, u"tag"_s + n}},
                                   {u"index"_s, i}};
  }
  return list;
}

}  // namespace quillo
