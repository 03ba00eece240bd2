#pragma once

#include <QTextFormat>

// What an entry's document says of its own blocks and characters, beside what Qt's formats say. None of it is drawn by
// Qt; paintDecorations does that.
namespace quillo::EntryFormat {

enum BlockProperty {
  ListMark = QTextFormat::UserProperty + 1,  // QString: what stands before an item, "\u2022" or "5."
  TaskMark,                                  // bool: a task's box, and whether it is ticked
  Code,                                      // bool: a line of a block of code
  Rule,                                      // bool: a line across the column; the block is empty
  Joined,                                    // bool: the text goes on from the block before without a line break
  Heading,                                   // bool: the entry's own heading, not part of its text
};

enum CharacterProperty {
  CodeSpan = QTextFormat::UserProperty + 32,  // bool: code among words
  SetApart,                                   // int: another for each of two neighbours that are not to be one sign
};

}  // namespace quillo::EntryFormat
