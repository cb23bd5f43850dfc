// Looks texts up with gettext, in the domain that is set; a key without an entry is its own text.

#include "Platform/Foundation/LocalizedString.h"

#include "Platform/Foundation/Exception.h"

#include <libintl.h>
#include <mutex>
#include <new>

namespace Imaging::Platform {

namespace {

struct Catalogue {
    std::mutex lock;
    std::string domain;
};

void bind(const std::string& domain, const std::string& directory) {
    if (!directory.empty() && bindtextdomain(domain.c_str(), directory.c_str()) == nullptr) {
        throw std::bad_alloc();
    }
    // Otherwise gettext would convert to the locale's encoding, which is ASCII for the C locale.
    if (bind_textdomain_codeset(domain.c_str(), "UTF-8") == nullptr) throw std::bad_alloc();
}

/// Never destroyed: static objects of the program may still ask while they are torn down.
Catalogue& catalogue() {
    static Catalogue& instance = *[] {
        bind("imaging", "");
        return new Catalogue{{}, "imaging"};
    }();
    return instance;
}

std::string currentDomain() {
    const std::lock_guard guard(catalogue().lock);
    return catalogue().domain;
}

} // namespace

std::string localizedStringForKey(const std::string& key, const std::string& value) {
    const std::string& fallback = value.empty() ? key : value;
    // The entry of the empty key is the catalogue's own header.
    if (key.empty()) return fallback;
    const std::string domain = currentDomain();
    const char* text = dgettext(domain.c_str(), key.c_str());
    // Without an entry gettext gives back the very pointer.
    return text == key.c_str() ? fallback : text;
}

void setLocalizationDomain(const std::string& domain, const std::string& directory) {
    if (domain.empty()) throw NSException(NSInvalidArgumentException, "the localization domain is empty");
    bind(domain, directory);
    const std::lock_guard guard(catalogue().lock);
    catalogue().domain = domain;
}

} // namespace Imaging::Platform
