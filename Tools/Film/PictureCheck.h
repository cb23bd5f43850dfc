#pragma once

#include "Show/Show.h"

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Imaging::Tool {

/// A picture that cannot be read.
struct BadPicture {
    std::string name; ///< as it is shown
    std::string why;
};

/// Reads the pictures of a film once before it is made, each to its end, so that what is missing, damaged or
/// cut short is known before anything is drawn. What comes from standard input or the network is kept in
/// files without a name, so that it can be read again.
class PictureCheck {
public:
    /// On two threads, with a progress line unless `quiet`. A picture that comes several times is read once.
    PictureCheck(const std::vector<ShowPicture>& pictures, bool quiet);

    /// Without doubles, in the order in which the film has them.
    const std::vector<BadPicture>& badPictures() const { return m_bad; }

    /// What to read a picture from; the name itself for a file.
    std::string source(const std::string& name) const;

    /// The name of a picture that is read from `source`.
    std::string nameOf(const std::string& source) const;

    bool isBad(const std::string& name) const;

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    struct Input {
        std::string name;
        std::string why{}; ///< it is bad; empty while it is not
        std::unique_ptr<std::FILE, Close> copy{};
    };

    static void check(Input& input);
    static void keepCopy(Input& input, const std::vector<std::uint8_t>& bytes);
    void checkAll(bool quiet);

    std::vector<Input> m_inputs;
    std::map<std::string, std::size_t> m_places; ///< of names in m_inputs
    std::vector<BadPicture> m_bad;
};

} // namespace Imaging::Tool
