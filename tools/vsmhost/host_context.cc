#include "host_context.h"

#include <dirent.h>

#include <cstdio>
#include <fstream>
#include <iterator>

namespace vsmhost {

namespace {

const char* ContentType(const std::string& name) {
  static const std::pair<const char*, const char*> kTypes[] = {
      {".html", "text/html; charset=utf-8"},
      {".js", "text/javascript; charset=utf-8"},
      {".css", "text/css; charset=utf-8"},
      {".png", "image/png"},
      {".svg", "image/svg+xml"},
      {".ico", "image/x-icon"},
  };
  for (const auto& [suffix, type] : kTypes) {
    const size_t length = std::char_traits<char>::length(suffix);
    if (name.size() > length && name.compare(name.size() - length, length, suffix) == 0) {
      return type;
    }
  }
  return "application/octet-stream";
}

}  // namespace

ConnectionSlot::~ConnectionSlot() {
  if (host_ != nullptr) host_->open_.fetch_sub(1);
}

HostContext::HostContext(HostOptions options, std::vector<std::unique_ptr<ModuleLibrary>> modules)
    : options_(std::move(options)), modules_(std::move(modules)) {
  LoadPage();
}

// The page is a handful of small files: read once, so a request never touches the disk and no
// name from a URL ever reaches the file system.
void HostContext::LoadPage() {
  DIR* folder = opendir(options_.pageDirectory.c_str());
  if (folder == nullptr) {
    fprintf(stderr, "vsmhost: no page folder %s: the page routes answer 404\n",
            options_.pageDirectory.c_str());
    return;
  }
  while (const dirent* entry = readdir(folder)) {
    const std::string name = entry->d_name;
    if (name.empty() || name[0] == '.') continue;
    std::ifstream file(options_.pageDirectory + "/" + name, std::ios::binary);
    if (!file) continue;
    PageFile page{ContentType(name), std::string(std::istreambuf_iterator<char>(file), {})};
    if (!file.bad()) page_.emplace(name, std::move(page));
  }
  closedir(folder);
}

const ModuleLibrary* HostContext::FindModule(const std::string& alias) const {
  for (const auto& module : modules_) {
    if (module->alias() == alias) return module.get();
  }
  return nullptr;
}

const PageFile* HostContext::FindPageFile(const std::string& name) const {
  const auto found = page_.find(name);
  return found == page_.end() ? nullptr : &found->second;
}

std::optional<ConnectionSlot> HostContext::TakeSlot() {
  unsigned open = open_.load();
  do {
    if (open >= options_.maxConnections) return std::nullopt;
  } while (!open_.compare_exchange_weak(open, open + 1));
  return std::optional<ConnectionSlot>(std::in_place, this);
}

unsigned HostContext::NewConnectionNumber() {
  unsigned number;
  do {
    number = nextNumber_.fetch_add(1) + 1;
  } while (number == 0);
  return number;
}

double HostContext::UptimeSeconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - started_).count();
}

}  // namespace vsmhost
