#pragma once

#include "exchange/EntryWriter.h"
#include "exchange/ExportFolder.h"

#include <QHash>

#include <memory>

namespace quillo {

// One Markdown file an entry, with its date, zone, tags, place and weather in YAML above the text, as note programs
// read it: "2026-11-24 1842 First words.md".
class MarkdownFolderWriter final : public EntryWriter {
 public:
  explicit MarkdownFolderWriter(std::unique_ptr<ExportFolder> folder) : m_folder(std::move(folder)) {}
  bool begin(const ExportOverview& overview, Error* error) override;
  bool add(const ExportedEntry& exported, Error* error) override;
  bool end(Error* error) override;

  // What the file of an entry holds.
  [[nodiscard]] static QByteArray fileOf(const IndexedEntry& entry);
  // Its name, without the ending, on any file system; other entries may have the same.
  [[nodiscard]] static QString nameOf(const IndexedEntry& entry);

 private:
  std::unique_ptr<ExportFolder> m_folder;
  // How often each name was given, without case, as some file systems compare them. The names themselves would take far
  // more memory; two that share a number cost a needless "(2)". No name of ours has parentheses but for that.
  QHash<size_t, int> m_uses;
};

}  // namespace quillo
