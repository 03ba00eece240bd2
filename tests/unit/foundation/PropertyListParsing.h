#pragma once

#include "foundation/PropertyListSerialization.h"

#include <algorithm>
#include <cmath>
#include <iostream>

namespace quillo {

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

}  // namespace quillo
