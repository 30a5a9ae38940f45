// CIniDocument: the in-memory form of the module's plain-text configuration files.
//
// A document is an ordered map of sections; a section is an ordered map of keys to values.
// Both maps compare names with strcasecmp (wcscasecmp in the wide form), so lookups ignore
// ASCII case, iteration runs in case-insensitive alphabetical order (not in file order), and
// the first spelling of a name is the one kept. Every name argument is taken by value and
// trimmed of " \t" at both ends before it is used; the caller's text is never changed. Values
// are stored exactly as given.
//
// Grammar read by Load, one line per '\n':
//   - " \t" at the start and "\r\n" at the end are removed; an empty line is skipped;
//   - a line starting with '[' whose last non-blank is ']' opens the section named by the line
//     without its first and last characters (so "[abc] " opens "abc]");
//   - otherwise "key=value" at the first '=' sets a key of the current section; the value keeps
//     its blanks; lines without '=', starting with '=', or before any section are dropped.
// There is no comment syntax: "# a=b" is the key "# a". Save writes "[name]\n" and then
// "key=value\n" for each key, in map order, with no blank lines and no carriage returns; a name
// or value holding a line feed is written up to it, so that no entry spills onto a line of its
// own. Saving to a file replaces it whole through a temporary file (support/atomic_file.h):
// readers and a crash see the old content or the new, and a failed save leaves the old file.
//
// Ownership: a document owns its sections and a section its keys. A pointer handed out by
// GetSection, GetOrAddSection, GetKey or GetOrAddKey stays valid until that entry is deleted or
// the document is cleared or destroyed; renaming keeps it valid.
// Failure: a file that can't be opened leaves the document untouched, even without merging;
// Load and Save report nothing, and a stream that fails keeps its failure bit. Nothing is thrown
// except std::bad_alloc. Not thread-safe: each caller works on its own instance or locks.
//
// One algorithm serves two character types: CIniDocument, IniSection and IniKey over char, and
// CIniDocumentW, IniSectionW and IniKeyW over wchar_t, whose file names are converted with
// wcstombs (in the current locale) before a file is opened.
#ifndef VSM_SUPPORT_INI_DOCUMENT_H_
#define VSM_SUPPORT_INI_DOCUMENT_H_

#include <istream>
#include <map>
#include <memory>
#include <ostream>
#include <string>

namespace vsm {

// strcasecmp order for narrow names, wcscasecmp order for wide ones. Both stop at the first
// NUL of a name, as the C functions do.
struct IniNameLess {
  bool operator()(const std::string& a, const std::string& b) const;
  bool operator()(const std::wstring& a, const std::wstring& b) const;
};

template <typename CharT>
class BasicIniDocument;
template <typename CharT>
class BasicIniSection;

template <typename CharT>
class BasicIniKey {
 public:
  using String = std::basic_string<CharT>;

  BasicIniKey(const BasicIniKey&) = delete;
  BasicIniKey& operator=(const BasicIniKey&) = delete;
  virtual ~BasicIniKey() = default;

  BasicIniSection<CharT>* parent() const { return parent_; }
  const String& name() const { return name_; }

  String GetValue() const { return value_; }
  void SetValue(const String& value) { value_ = value; }
  // 1 when renamed; 0 when another key of the section already has the name, and then nothing
  // changes. A change of case of the key's own name succeeds.
  int Rename(String newName);

 private:
  friend class BasicIniSection<CharT>;
  BasicIniKey(BasicIniSection<CharT>* parent, const String& name) : parent_(parent), name_(name) {}

  BasicIniSection<CharT>* parent_;
  String name_;
  String value_;
};

template <typename CharT>
class BasicIniSection {
 public:
  using String = std::basic_string<CharT>;
  using Key = BasicIniKey<CharT>;
  using KeyMap = std::map<String, std::unique_ptr<Key>, IniNameLess>;

  BasicIniSection(const BasicIniSection&) = delete;
  BasicIniSection& operator=(const BasicIniSection&) = delete;
  virtual ~BasicIniSection() = default;

  BasicIniDocument<CharT>* parent() const { return parent_; }
  const String& name() const { return name_; }
  const KeyMap& keys() const { return keys_; }

  // Null when missing.
  Key* GetKey(String name) const;
  Key* GetOrAddKey(String name);
  // Empty when missing.
  String GetValue(String keyName) const;
  void SetValue(String keyName, const String& value);
  void DeleteKey(String name);
  // 1 when renamed; 0 when another section of the document already has the name, and then
  // nothing changes.
  int Rename(String newName);

 private:
  friend class BasicIniDocument<CharT>;
  friend class BasicIniKey<CharT>;
  BasicIniSection(BasicIniDocument<CharT>* parent, const String& name)
      : parent_(parent), name_(name) {}

  BasicIniDocument<CharT>* parent_;
  String name_;
  KeyMap keys_;
};

template <typename CharT>
class BasicIniDocument {
 public:
  using String = std::basic_string<CharT>;
  using Section = BasicIniSection<CharT>;
  using SectionMap = std::map<String, std::unique_ptr<Section>, IniNameLess>;

  BasicIniDocument() = default;
  BasicIniDocument(const BasicIniDocument&) = delete;
  BasicIniDocument& operator=(const BasicIniDocument&) = delete;
  virtual ~BasicIniDocument() { Clear(); }

  // Reads a file or a stream. Without `merge` the document is cleared when the parse starts
  // (for a file: only once it has been opened); with `merge` the entries read are laid over
  // what is there.
  void Load(const String& path, bool merge = false);
  void Load(std::basic_istream<CharT>& in, bool merge = false);
  // Writes the document; a file is replaced whole, keeping its mode, owner and symlinks.
  void Save(const String& path) const;
  void Save(std::basic_ostream<CharT>& out) const;

  // Deletes every section and key.
  void Clear() { sections_.clear(); }
  const SectionMap& sections() const { return sections_; }

  // Null when missing.
  Section* GetSection(String name) const;
  Section* GetOrAddSection(String name);
  // `defaultValue` (or an empty text) when the section or the key is missing.
  String GetValue(String sectionName, String keyName, const String& defaultValue) const;
  String GetValue(String sectionName, String keyName) const;
  // Creates what is missing, then assigns.
  void SetValue(String sectionName, String keyName, const String& value);
  void DeleteSection(String name);
  // As Rename of the section or key; 0 also when the section or the key is missing.
  int RenameSection(String oldName, String newName);
  int RenameKey(String sectionName, String oldName, String newName);

 private:
  friend class BasicIniSection<CharT>;

  SectionMap sections_;
};

extern template class BasicIniKey<char>;
extern template class BasicIniSection<char>;
extern template class BasicIniDocument<char>;
extern template class BasicIniKey<wchar_t>;
extern template class BasicIniSection<wchar_t>;
extern template class BasicIniDocument<wchar_t>;

using CIniDocument = BasicIniDocument<char>;
using IniSection = BasicIniSection<char>;
using IniKey = BasicIniKey<char>;
using CIniDocumentW = BasicIniDocument<wchar_t>;
using IniSectionW = BasicIniSection<wchar_t>;
using IniKeyW = BasicIniKey<wchar_t>;

}  // namespace vsm

#endif  // VSM_SUPPORT_INI_DOCUMENT_H_
