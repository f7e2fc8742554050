// A user's tree of keys and values for one test alone, empty at first and gone at its end. A program that
// uses this links tavra_process.
#pragma once

#if defined(_WIN32)
#include <windows.h>

#include <string>
#else
#include "support/process.h"
#include "support/temp_folder.h"
#endif

namespace tavra::test {

#if defined(_WIN32)
class UserTree {
  public:
    UserTree() : name_("Software\\TavraTestTree" + std::to_string(GetCurrentProcessId())) {
        RegCreateKeyA(HKEY_CURRENT_USER, name_.c_str(), &root_);
        RegOverridePredefKey(HKEY_CURRENT_USER, root_);
    }
    ~UserTree() {
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        RegCloseKey(root_);
        RegDeleteTreeA(HKEY_CURRENT_USER, name_.c_str());
    }
    UserTree(const UserTree&) = delete;
    UserTree& operator=(const UserTree&) = delete;

  private:
    HKEY root_ = nullptr;
    std::string name_;
};
#else
class UserTree {
  public:
    UserTree() { setEnvironment("XDG_CONFIG_HOME", folder_.path().string()); }
    UserTree(const UserTree&) = delete;
    UserTree& operator=(const UserTree&) = delete;

    std::filesystem::path database() const { return folder_.path() / "tavra" / "settings.db"; }

  private:
    const TempFolder folder_;
};
#endif

}  // namespace tavra::test
