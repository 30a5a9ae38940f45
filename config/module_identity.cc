#include "config/module_identity.h"

#include <atomic>

namespace vsm {

const char kModuleAlias[] = "vsm";
const char kScanningModuleAlias[] = "qpt";
const char* const kModuleAliasPair[2] = {kModuleAlias, kScanningModuleAlias};

const std::string ModuleDisplayName = "Veldorane Service Manager Module";
const std::string ServiceDisplayName = "Veldorane Service";
const char kModuleVersion[] = "16, 2, 6, 1212";
const char kBuildBanner[] = "vsm build 1212";

namespace {
std::atomic<uint32_t> workMode{0};
}  // namespace

uint32_t GetWorkMode() { return workMode.load(std::memory_order_relaxed); }
void SetWorkMode(uint32_t mode) { workMode.store(mode, std::memory_order_relaxed); }

}  // namespace vsm
