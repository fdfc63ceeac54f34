#pragma once

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "Support/TemporaryFolder.hpp"
#include "TQPlatform/Process/ChildProcess.hpp"

namespace tq::test {

/// A document on disk, as another program reads it.
class XMLDocument {
 public:
  explicit XMLDocument(const std::string& text) : file_(folder_.write("document.xml", text)) {}

  bool isWellFormed() const { return xmllint({"--noout"}).status == 0; }

  /// Whether the document follows a document type definition, its identifiers and references included.
  bool isValidBy(const std::string& definition) const {
    return xmllint({"--noout", "--dtdvalid", folder_.write("document.dtd", definition).string()}).status == 0;
  }

  /// The text that an XPath expression comes to; without the line feed that xmllint puts behind it.
  std::string value(const std::string& expression) const {
    const ChildResult result = xmllint({"--xpath", "string(" + expression + ")"});
    EXPECT_EQ(result.status, 0) << expression;
    const std::string_view text = textOf(result.output);
    return std::string(text.substr(0, text.size() - 1));
  }

 private:
  ChildResult xmllint(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "--nonet");
    arguments.push_back(file_.string());
    return runChild("/usr/bin/xmllint", arguments, {.time = std::chrono::seconds(60)});
  }

  TemporaryFolder folder_;
  std::filesystem::path file_;
};

}  // namespace tq::test
