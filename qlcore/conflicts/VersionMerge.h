#pragma once

#include "foundation/PropertyListValue.h"
#include "qlcore/TextMerge.h"
#include "qlcore/conflicts/EntryVersions.h"

#include <QString>

#include <optional>

namespace quillo::VersionMerge {

// What becomes of two versions where nothing has to be decided: the texts are the same, or both were made from
// `ancestor` and do not clash; and beside them nothing differs but tags, which are put together, the weather and the
// date of the last save, of which the first version has the right of way, and what only one of them has. Nothing where
// a person has to look.
[[nodiscard]] std::optional<PropertyListDictionary> byItself(const PropertyListDictionary& first,
                                                             const PropertyListDictionary& second,
                                                             const std::optional<QString>& ancestor);

// The fields of both, where they differ those of the first, with the tags of both and the later date of the two.
[[nodiscard]] PropertyListDictionary fieldsOfBoth(const PropertyListDictionary& first,
                                                  const PropertyListDictionary& second);

// The fields of two versions that were made from `base`, with the changes of both. Where both changed the same, texts
// are merged, with both where they clash, tags are put together, the later date of the last save counts, and of the
// rest what `ours` has. An empty `base` is that of two that have nothing in common.
[[nodiscard]] PropertyListDictionary ofThree(const PropertyListDictionary& base, const PropertyListDictionary& ours,
                                             const PropertyListDictionary& theirs);

// The texts of all whole versions as one: with the changes of each where the ancestor is known, else with all words of
// all. It is a proposal; what is kept is for the person to say.
[[nodiscard]] MergedText texts(const EntryVersions& entry, const std::optional<QString>& ancestor);

}  // namespace quillo::VersionMerge
