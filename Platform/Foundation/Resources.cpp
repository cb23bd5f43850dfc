// Looks for a file in one folder after another, the most specific one first.

#include "Platform/Foundation/Resources.h"

#include "Platform/Foundation/Exception.h"

#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <mutex>
#include <system_error>

namespace Imaging::Platform {

namespace {

struct ApplicationFolder {
    std::mutex lock;
    std::string path;
};

/// Never destroyed: static objects of the program may still ask while they are torn down.
ApplicationFolder& applicationFolder() {
    static ApplicationFolder& instance = *new ApplicationFolder;
    return instance;
}

/// Where the resources lie beside the library as it was loaded, so that a whole installation can be moved.
/// With a static library this is beside the program.
std::string folderBesideLibrary() {
    Dl_info library{};
    if (dladdr(reinterpret_cast<const void*>(&applicationFolder), &library) == 0) return {};
    std::error_code error;
    const std::filesystem::path file = std::filesystem::canonical(library.dli_fname, error);
    if (error) return {};
    return (file.parent_path() / IMAGING_RESOURCES_FROM_LIBRARY).lexically_normal().string();
}

} // namespace

void setResourceFolder(const std::string& folder) {
    const std::lock_guard guard(applicationFolder().lock);
    applicationFolder().path = folder;
}

std::vector<std::string> resourceFolders() {
    std::vector<std::string> folders;
    const auto add = [&folders](const std::string& folder) {
        if (!folder.empty()) folders.push_back(folder);
    };
    {
        const std::lock_guard guard(applicationFolder().lock);
        add(applicationFolder().path);
    }
    const char* const fromEnvironment = std::getenv("IMAGING_RESOURCES");
    add(fromEnvironment != nullptr ? fromEnvironment : "");
    add(folderBesideLibrary());
    add(IMAGING_RESOURCES_INSTALLED);
    add(IMAGING_RESOURCES_IN_SOURCES);
    return folders;
}

std::string pathForImageResource(const std::string& name) {
    const std::string fileName = name + ".png";
    std::string searched;
    for (const std::string& folder : resourceFolders()) {
        std::error_code ignored;
        const std::filesystem::path file = std::filesystem::path(folder) / fileName;
        if (std::filesystem::is_regular_file(file, ignored)) return file.string();
        searched += (searched.empty() ? "" : ", ") + folder;
    }
    throw NSException(NSResourceException,
                      "the resource " + fileName + " is not in any of " + searched +
                          "; install the library's resources, or name their folder in IMAGING_RESOURCES");
}

} // namespace Imaging::Platform
