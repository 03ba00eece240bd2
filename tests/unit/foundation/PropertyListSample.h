#pragma once

#include "foundation/PropertyListSerialization.h"

#include <QFile>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>

namespace quillo {

// What tests/data/plist/sample.py writes: every kind of value.
inline PropertyListValue sampleList() {
  using namespace Qt::StringLiterals;
  QByteArray bytes;
  for (char c = 0; c < 64; ++c) bytes.append(c);
  return PropertyListDictionary{
      {u"array"_s, PropertyListArray{1, true, u"two"_s, 3.5, PropertyListArray(), PropertyListDictionary()}},
      {u"bytes"_s, bytes},
      {u"date"_s, Date::since1970(1394481600)},
      {u"dict"_s, PropertyListDictionary{{u"a & b"_s, u"<tag>"_s},
                                         {u"nested"_s, PropertyListDictionary{{u"empty"_s, u""_s},
                                                                              {u"emptyData"_s, QByteArray()}}}}},
      {u"false"_s, false},
      {u"int8"_s, 255},
      {u"int16"_s, 65535},
      {u"int32"_s, qint64{4294967295}},
      {u"int64"_s, std::numeric_limits<qint64>::max()},
      {u"minimum"_s, std::numeric_limits<qint64>::min()},
      {u"negative"_s, -1},
      {u"real"_s, 0.1},
      {u"text"_s, u"Gr\u00fc\u00dfe \U0001f642"_s},
      {u"true"_s, true},
      {u"unsigned"_s, std::numeric_limits<quint64>::max()},
  };
}

// Equal in kind as well as in value, down to the bits of reals.
inline bool identical(const PropertyListValue& a, const PropertyListValue& b) {
  if (a.isBool() != b.isBool() || a.isInteger() != b.isInteger() || a.isReal() != b.isReal()) return false;
  if (a.isReal() && a.doubleValue() != a.doubleValue()) return b.doubleValue() != b.doubleValue();
  if (a.isReal() && std::signbit(a.doubleValue()) != std::signbit(b.doubleValue())) return false;
  if (a.isDate() && b.isDate()) {
    const PropertyListValue mine = a.date()->timeIntervalSinceReferenceDate();
    return identical(mine, b.date()->timeIntervalSinceReferenceDate());
  }
  if (a.isArray() && b.isArray())
    return std::equal(a.array().begin(), a.array().end(), b.array().begin(), b.array().end(), identical);
  if (a.isDictionary() && b.isDictionary())
    return a.dictionary().keys() == b.dictionary().keys() &&
           std::equal(a.dictionary().begin(), a.dictionary().end(), b.dictionary().begin(), identical);
  return a == b;
}

// The list, or the null value and the reason on the test's output.
inline std::optional<PropertyListValue> parsed(const QByteArray& data, PropertyListFormat* format = nullptr) {
  Error error;
  auto result = PropertyListSerialization::propertyListWithData(data, format, &error);
  if (!result) std::cerr << error.localizedDescription.toStdString() << '\n';
  return result;
}

// Why the data is no list; empty where it is one.
inline std::string whyRefused(const QByteArray& data) {
  Error error;
  if (PropertyListSerialization::propertyListWithData(data, nullptr, &error)) return {};
  if (error.domain != ErrorDomain::cocoa || error.code != ErrorCode::propertyListReadCorrupt) return "wrong error";
  return error.localizedDescription.toStdString();
}

inline QByteArray fixture(const char* name) {
  QFile file(QStringLiteral(QUILLO_TEST_DATA "/plist/") + QLatin1StringView(name));
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace quillo
