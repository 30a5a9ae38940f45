// The ini document and the profile calls over it.
//
// Input: a section name, a key name and a value, separated by NUL bytes, then a byte for the
// output size, then the document (the rest of the input). The document read, saved and read
// again has the same sections and keys with the same values, and saves to the same bytes.
// GetProfileString on the document as a file gives the value the document holds, cut to the
// output's size; after WriteProfileString of a value the grammar can carry, it reads back.
#include <fstream>
#include <sstream>
#include <string>

#include "fuzz_support.h"
#include "support/ini_document.h"
#include "support/profile_string.h"

namespace {

using vsm::CIniDocument;
using vsm::fuzz::FuzzCheck;

std::string Saved(const CIniDocument& document) {
  std::ostringstream out;
  document.Save(out);
  return out.str();
}

bool SameEntries(const CIniDocument& a, const CIniDocument& b) {
  if (a.sections().size() != b.sections().size()) return false;
  for (auto left = a.sections().begin(), right = b.sections().begin(); left != a.sections().end();
       ++left, ++right) {
    const auto& keysA = left->second->keys();
    const auto& keysB = right->second->keys();
    if (left->second->name() != right->second->name() || keysA.size() != keysB.size()) {
      return false;
    }
    for (auto key = keysA.begin(), other = keysB.begin(); key != keysA.end(); ++key, ++other) {
      if (key->second->name() != other->second->name() ||
          key->second->GetValue() != other->second->GetValue()) {
        return false;
      }
    }
  }
  return true;
}

std::string Trimmed(const std::string& name) {
  const size_t first = name.find_first_not_of(" \t");
  if (first == std::string::npos) return std::string();
  return name.substr(first, name.find_last_not_of(" \t") - first + 1);
}

// Whether a line "key=value" under "[section]" reads back as that key and value: no line feed
// anywhere, a key that is not empty, holds no '=' and doesn't start like a section line, and a
// value that doesn't end in a carriage return (line ends lose those).
bool GrammarCarries(const std::string& section, const std::string& key, const std::string& value) {
  const std::string name = Trimmed(key);
  return (section + key + value).find('\n') == std::string::npos && !name.empty() &&
         name.find('=') == std::string::npos && name[0] != '[' &&
         (value.empty() || value.back() != '\r');
}

void CheckDocument(const std::string& text, const std::string& section, const std::string& key) {
  CIniDocument document;
  std::istringstream in(text);
  document.Load(in);
  const std::string saved = Saved(document);
  CIniDocument reread;
  std::istringstream again(saved);
  reread.Load(again);
  FuzzCheck(SameEntries(document, reread), "a saved document reads back the same", text);
  FuzzCheck(Saved(reread) == saved, "a saved document saves the same", saved);

  std::istringstream merged(text);
  document.Load(merged, true);
  FuzzCheck(Saved(document) == saved, "merging a document into itself changes nothing", text);
  document.RenameKey(section, key, key + "2");
  document.RenameSection(section, key);
  document.DeleteSection(key);

  vsm::CIniDocumentW wide;
  std::wistringstream wideIn(std::wstring(text.begin(), text.end()));
  wide.Load(wideIn);
  std::wostringstream wideOut;
  wide.Save(wideOut);
}

void CheckProfile(const std::string& text, const std::string& section, const std::string& key,
                  const std::string& value, int outputSize) {
  const std::string file = vsm::fuzz::ScratchFolder() + "/profile.ini";
  std::ofstream(file, std::ios::binary | std::ios::trunc) << text;
  CIniDocument document;
  std::istringstream in(text);
  document.Load(in);
  const std::string expected = document.GetValue(section.c_str(), key.c_str(), "none");
  std::string output(static_cast<size_t>(outputSize), '\0');
  const int length = vsm::GetProfileString(section.c_str(), key.c_str(), "none", output.data(),
                                           outputSize, file.c_str());
  FuzzCheck(length == static_cast<int>(expected.size()), "the length of the whole value", key);
  // The copy is a strncpy: it ends at a NUL inside the value.
  FuzzCheck(
      outputSize < 2 || std::string(expected.c_str()).substr(0, outputSize - 2) == output.c_str(),
      "the value, cut to the output", key);

  vsm::WriteProfileString(section.c_str(), key.c_str(), value.c_str(), file.c_str());
  if (!GrammarCarries(section.c_str(), key.c_str(), value.c_str())) return;
  std::string readBack(value.size() + 2, '\0');
  vsm::GetProfileString(section.c_str(), key.c_str(), "", readBack.data(),
                        static_cast<int>(readBack.size()), file.c_str());
  FuzzCheck(readBack.c_str() == std::string(value.c_str()), "a written value reads back",
            section + "\n" + key + "\n" + value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto fields = vsm::fuzz::SplitFields(data, size, 4);
  if (fields.size() < 4 || fields[3].empty()) return 0;
  const int outputSize = static_cast<unsigned char>(fields[3][0]);
  const std::string text = fields[3].substr(1);
  CheckDocument(text, fields[0], fields[1]);
  CheckProfile(text, fields[0], fields[1], fields[2], outputSize);
  return 0;
}
