// The host's store behind GetImage, SetImage and Reserved: records by GUID and the file white
// list, driven by a sequence of calls with URLs, records and paths from the input.
//
// A model of the store follows the calls: a record read back is the one last stored under its
// GUID, zero-padded, or absent after a removal; a path added to the white list is listed. The
// store is dropped after each input, so memory stays bounded however long the run.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "core/virtual_manager_client.h"
#include "fuzz_support.h"

namespace {

using vsm::VirtualManagerClient;
using vsm::fuzz::FuzzCheck;

constexpr char kGetRoute[] = "/GetEncryptedImageMap?";
constexpr char kSetRoute[] = "/SetEncryptedImageMap?";
constexpr size_t kMostCalls = 32;

std::string PathKey(const std::string& path) {
  std::string key = path;
  for (char& c : key) c = c == '\\' ? '/' : c;
  return key;
}

// A URL of the input, or one built around a GUID of the input so that the routes are reached.
std::string PickUrl(FuzzedDataProvider& input, const char* route) {
  std::string text = input.ConsumeRandomLengthString(256);
  return input.ConsumeBool() ? text : std::string(route) + "GUID=" + text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  VirtualManagerClient* store = VirtualManagerClient::GetInstance();
  std::map<std::string, std::vector<uint8_t>> records;
  std::set<std::string> listed;
  for (size_t call = 0; call < kMostCalls && input.remaining_bytes() > 0; ++call) {
    switch (input.ConsumeIntegralInRange(0, 3)) {
      case 0: {
        const std::string url = PickUrl(input, kSetRoute);
        const std::string guid = VirtualManagerClient::ExtractGuid(url.c_str(), kSetRoute);
        const bool remove = input.ConsumeBool();
        // The host and the module agree on 2052-byte records; a longer one ends the process.
        std::vector<uint8_t> record =
            input.ConsumeBytes<uint8_t>(input.ConsumeIntegralInRange<size_t>(0, 2052));
        // An empty record is stored too: only a null pointer removes.
        const uint8_t* bytes =
            record.empty() ? reinterpret_cast<const uint8_t*>("") : record.data();
        const int result = store->SetImage(url.c_str(), remove ? nullptr : bytes,
                                           static_cast<uint32_t>(record.size()));
        FuzzCheck(result == (guid.empty() ? 0 : 1), "SetImage stores under a GUID only", url);
        if (guid.empty()) break;
        record.resize(sizeof(vsm::ImageMapEntry));
        if (remove) {
          records.erase(guid);
        } else {
          records[guid] = record;
        }
        break;
      }
      case 1: {
        const std::string url = PickUrl(input, kGetRoute);
        const std::string guid = VirtualManagerClient::ExtractGuid(url.c_str(), kGetRoute);
        std::vector<uint8_t> out(sizeof(vsm::ImageMapEntry), 0xAA);
        uint32_t length = 0;
        const int result = store->GetImage(url.c_str(), out.data(), &length);
        const auto stored = records.find(guid);
        if (guid.empty() || stored == records.end()) {
          FuzzCheck(result == 0, "GetImage finds only what was stored", url);
        } else {
          FuzzCheck(result == 1 && length == out.size() && out == stored->second,
                    "GetImage gives the record as it was stored", url);
        }
        break;
      }
      default: {
        const std::string subCommand = input.ConsumeRandomLengthString(32);
        const std::string path = input.ConsumeRandomLengthString(256).c_str();
        const char* const marker = input.ConsumeBool() ? "" : nullptr;
        const int result = store->Reserved(subCommand.c_str(), path.c_str(), marker);
        if (marker == nullptr && subCommand.compare(0, 18, "addFileToWhiteList") == 0) {
          listed.insert(PathKey(path));
        }
        const bool asks = subCommand.compare(0, 18, "fileInQPTWhiteList") == 0;
        if (marker == nullptr && asks) {
          FuzzCheck(result == (listed.count(PathKey(path)) != 0 ? 0 : -1),
                    "the white list holds the paths added to it", path);
        }
        break;
      }
    }
  }
  VirtualManagerClient::DestroyInstance();
  return 0;
}
