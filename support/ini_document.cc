#include "support/ini_document.h"

#include <strings.h>
#include <unistd.h>
#include <wchar.h>
#include <ext/stdio_filebuf.h>

#include <cstdlib>
#include <fstream>
#include <utility>
#include <vector>

#include "support/atomic_file.h"

namespace vsm {

bool IniNameLess::operator()(const std::string& a, const std::string& b) const {
  return strcasecmp(a.c_str(), b.c_str()) < 0;
}

bool IniNameLess::operator()(const std::wstring& a, const std::wstring& b) const {
  return wcscasecmp(a.c_str(), b.c_str()) < 0;
}

namespace {

template <typename CharT>
bool IsBlank(CharT c) {
  return c == CharT(' ') || c == CharT('\t');
}

template <typename CharT>
bool IsLineEnd(CharT c) {
  return c == CharT('\r') || c == CharT('\n');
}

template <typename CharT>
void TrimBlanks(std::basic_string<CharT>* text) {
  size_t end = text->size();
  while (end > 0 && IsBlank((*text)[end - 1])) --end;
  size_t begin = 0;
  while (begin < end && IsBlank((*text)[begin])) ++begin;
  *text = text->substr(begin, end - begin);
}

// The file name as the C library wants it.
std::string FileNameBytes(const std::string& path) { return path; }

// A wide name that can't be converted gives an empty name, which no file has: the load or save
// then fails the same way as for a missing file.
std::string FileNameBytes(const std::wstring& path) {
  size_t length = wcstombs(nullptr, path.c_str(), 0);
  if (length == static_cast<size_t>(-1)) return std::string();
  std::vector<char> bytes(length + 1);
  wcstombs(bytes.data(), path.c_str(), bytes.size());
  return std::string(bytes.data(), length);
}

// A name or a value is written up to its first line feed, so that one entry is always one line:
// a value that came from a page can't add keys or sections of its own to the file.
template <typename CharT>
std::basic_string<CharT> OneLine(const std::basic_string<CharT>& text) {
  return text.substr(0, text.find(CharT('\n')));
}

// Takes the entry out of `map` under its old name and puts it in again under `newName`, so that
// it lands in its new place in the order; when the name is taken by another entry the old name
// goes back. Extracting first lets an entry change only the case of its own name.
template <typename Map, typename String>
int RenameEntry(Map* map, String* entryName, String newName) {
  TrimBlanks(&newName);
  auto node = map->extract(*entryName);
  if (node.empty()) return 0;
  String oldName = std::move(node.key());
  node.key() = newName;
  auto result = map->insert(std::move(node));
  if (!result.inserted) {
    result.node.key() = std::move(oldName);
    map->insert(std::move(result.node));
    return 0;
  }
  *entryName = std::move(newName);
  return 1;
}

}  // namespace

template <typename CharT>
int BasicIniKey<CharT>::Rename(String newName) {
  return RenameEntry(&parent_->keys_, &name_, std::move(newName));
}

template <typename CharT>
BasicIniKey<CharT>* BasicIniSection<CharT>::GetKey(String name) const {
  TrimBlanks(&name);
  auto it = keys_.find(name);
  return it == keys_.end() ? nullptr : it->second.get();
}

template <typename CharT>
BasicIniKey<CharT>* BasicIniSection<CharT>::GetOrAddKey(String name) {
  TrimBlanks(&name);
  auto it = keys_.find(name);
  if (it != keys_.end()) return it->second.get();
  std::unique_ptr<Key> key(new Key(this, name));
  Key* result = key.get();
  keys_.emplace(std::move(name), std::move(key));
  return result;
}

template <typename CharT>
std::basic_string<CharT> BasicIniSection<CharT>::GetValue(String keyName) const {
  Key* key = GetKey(std::move(keyName));
  return key ? key->GetValue() : String();
}

template <typename CharT>
void BasicIniSection<CharT>::SetValue(String keyName, const String& value) {
  GetOrAddKey(std::move(keyName))->SetValue(value);
}

template <typename CharT>
void BasicIniSection<CharT>::DeleteKey(String name) {
  TrimBlanks(&name);
  keys_.erase(name);
}

template <typename CharT>
int BasicIniSection<CharT>::Rename(String newName) {
  return RenameEntry(&parent_->sections_, &name_, std::move(newName));
}

template <typename CharT>
void BasicIniDocument<CharT>::Load(const String& path, bool merge) {
  std::basic_ifstream<CharT> in(FileNameBytes(path), std::ios::in | std::ios::binary);
  if (!in.is_open()) return;
  Load(in, merge);
}

template <typename CharT>
void BasicIniDocument<CharT>::Load(std::basic_istream<CharT>& in, bool merge) {
  if (!merge) Clear();
  Section* current = nullptr;
  String line;
  while (std::getline(in, line)) {
    size_t end = line.size();
    while (end > 0 && IsLineEnd(line[end - 1])) --end;
    size_t begin = 0;
    while (begin < end && IsBlank(line[begin])) ++begin;
    if (begin == end) continue;
    line = line.substr(begin, end - begin);

    size_t lastSolid = line.size();
    while (lastSolid > 0 && (IsBlank(line[lastSolid - 1]) || IsLineEnd(line[lastSolid - 1]))) {
      --lastSolid;
    }
    if (line[0] == CharT('[') && lastSolid > 0 && line[lastSolid - 1] == CharT(']')) {
      // Deliberately cut as if the ']' closed the line, so "[abc] " opens "abc]": files in the
      // field have always been read this way, and a change would move their keys elsewhere.
      current = GetOrAddSection(line.substr(1, line.size() - 2));
      continue;
    }
    size_t equals = line.find(CharT('='));
    if (equals == String::npos || equals == 0 || current == nullptr) continue;
    current->SetValue(line.substr(0, equals), line.substr(equals + 1));
  }
}

template <typename CharT>
void BasicIniDocument<CharT>::Save(const String& path) const {
  // Through a temporary file renamed over the old one, not truncated in place: a crash or a
  // reader in another process must never meet an empty or half-written settings file. The
  // stream converts characters exactly as a file stream of this type would.
  ReplaceFileContent(FileNameBytes(path), [this](int descriptor) {
    __gnu_cxx::stdio_filebuf<CharT> file(dup(descriptor), std::ios::out | std::ios::binary);
    std::basic_ostream<CharT> out(&file);
    Save(out);
    return !out.fail() && file.close() != nullptr;
  });
}

template <typename CharT>
void BasicIniDocument<CharT>::Save(std::basic_ostream<CharT>& out) const {
  for (const auto& section : sections_) {
    out << CharT('[') << OneLine(section.second->name()) << CharT(']') << CharT('\n');
    for (const auto& key : section.second->keys()) {
      out << OneLine(key.second->name()) << CharT('=') << OneLine(key.second->GetValue())
          << CharT('\n');
    }
  }
  out.flush();
}

template <typename CharT>
BasicIniSection<CharT>* BasicIniDocument<CharT>::GetSection(String name) const {
  TrimBlanks(&name);
  auto it = sections_.find(name);
  return it == sections_.end() ? nullptr : it->second.get();
}

template <typename CharT>
BasicIniSection<CharT>* BasicIniDocument<CharT>::GetOrAddSection(String name) {
  TrimBlanks(&name);
  auto it = sections_.find(name);
  if (it != sections_.end()) return it->second.get();
  std::unique_ptr<Section> section(new Section(this, name));
  Section* result = section.get();
  sections_.emplace(std::move(name), std::move(section));
  return result;
}

template <typename CharT>
std::basic_string<CharT> BasicIniDocument<CharT>::GetValue(String sectionName, String keyName,
                                                           const String& defaultValue) const {
  Section* section = GetSection(std::move(sectionName));
  if (section == nullptr) return defaultValue;
  BasicIniKey<CharT>* key = section->GetKey(std::move(keyName));
  return key ? key->GetValue() : defaultValue;
}

template <typename CharT>
std::basic_string<CharT> BasicIniDocument<CharT>::GetValue(String sectionName,
                                                           String keyName) const {
  return GetValue(std::move(sectionName), std::move(keyName), String());
}

template <typename CharT>
void BasicIniDocument<CharT>::SetValue(String sectionName, String keyName, const String& value) {
  GetOrAddSection(std::move(sectionName))->SetValue(std::move(keyName), value);
}

template <typename CharT>
void BasicIniDocument<CharT>::DeleteSection(String name) {
  TrimBlanks(&name);
  sections_.erase(name);
}

template <typename CharT>
int BasicIniDocument<CharT>::RenameSection(String oldName, String newName) {
  Section* section = GetSection(std::move(oldName));
  return section ? section->Rename(std::move(newName)) : 0;
}

template <typename CharT>
int BasicIniDocument<CharT>::RenameKey(String sectionName, String oldName, String newName) {
  Section* section = GetSection(std::move(sectionName));
  if (section == nullptr) return 0;
  BasicIniKey<CharT>* key = section->GetKey(std::move(oldName));
  return key ? key->Rename(std::move(newName)) : 0;
}

template class BasicIniKey<char>;
template class BasicIniSection<char>;
template class BasicIniDocument<char>;
template class BasicIniKey<wchar_t>;
template class BasicIniSection<wchar_t>;
template class BasicIniDocument<wchar_t>;

}  // namespace vsm
