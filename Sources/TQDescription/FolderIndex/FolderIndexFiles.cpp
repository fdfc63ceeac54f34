#include "TQDescription/FolderIndex/FolderIndexFiles.hpp"

#include "TQDescription/FolderIndex/IndexBuilder.hpp"
#include "TQPlatform/FileSystem/Files.hpp"

namespace tq {

void writeFolderIndex(const std::filesystem::path& folder, const FolderIndex& index) {
  const std::string json = IndexBuilder::renderJSON(index), markdown = IndexBuilder::renderMarkdown(index);
  writeFileAtomically(folder / "_INDEX.json", viewOf(json));
  writeFileAtomically(folder / "_INDEX.md", viewOf(markdown));
}

}  // namespace tq
