#include "Support/FakeTool.hpp"

namespace tq::test {

std::filesystem::path writeTool(const TemporaryFolder& folder, std::string_view name, std::string_view body) {
  const std::filesystem::path tool = folder.write(name, "#!/bin/sh\n" + std::string(body) + "\n");
  std::filesystem::permissions(tool, std::filesystem::perms(0755));
  return tool;
}

}  // namespace tq::test
