#pragma once

#include <QtGlobal>

// The layout that the binary reader and writer share: the magic "bplist00", the objects, a table of their offsets, and
// a trailer. Every object starts with a marker byte: its kind in the upper half, a size or count in the lower one. All
// numbers are big-endian; objects name each other by their index in the table.
namespace quillo::PropertyListCoding::BinaryFormat {

inline constexpr quint64 headerSize = 8;
inline constexpr quint64 trailerSize = 32;

// Fields of the trailer, as offsets into it. The bytes before are unused.
inline constexpr quint64 offsetWidthField = 6;
inline constexpr quint64 referenceWidthField = 7;
inline constexpr quint64 objectCountField = 8;
inline constexpr quint64 topObjectField = 16;
inline constexpr quint64 tableOffsetField = 24;

enum Marker : quint8 {
  Null = 0x00,
  False = 0x08,
  True = 0x09,
  Fill = 0x0F,
  // The rest are the upper half; integers and reals have the binary logarithm of their width in the lower one.
  Integer = 0x10,
  Real = 0x20,
  DateMarker = 0x30,
  Data = 0x40,
  AsciiString = 0x50,
  Utf16String = 0x60,
  Uid = 0x80,
  Array = 0xA0,
  Set = 0xC0,
  Dictionary = 0xD0,
};

// In the lower half: the count is an integer object that follows.
inline constexpr quint8 countFollows = 0x0F;

}  // namespace quillo::PropertyListCoding::BinaryFormat
