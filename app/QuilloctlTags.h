#pragma once

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace quillo {

// What quilloctl is asked for the tags in use, and what its answer means: the tags, the most used first; nothing where
// it is no such answer. So the agent need not know the journal's index, which takes more memory than all of it.
namespace QuilloctlTags {

[[nodiscard]] QStringList arguments();
[[nodiscard]] std::optional<QStringList> tagsOfAnswer(const QByteArray& answer);

}  // namespace QuilloctlTags

}  // namespace quillo
