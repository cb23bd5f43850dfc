#pragma once

#include "Platform/Foundation/Data.h"
#include "Show/Show.h"

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Imaging::Tool {

/// A picture that cannot be read, or on which its operations cannot be carried out.
struct BadPicture {
    std::string name; ///< as it is shown
    std::string why;
};

/// Reads the pictures of a film once before it is made, each to its end, and tries their operations, so that
/// what is missing, damaged, cut short or not fit for what is to be done with it is known before anything is
/// drawn. What comes from standard input or the network is kept in files without a name, so that it can be
/// read again.
class PictureCheck {
public:
    /// Which pictures are looked at.
    enum class Extent { All, ThoseWithOperations };

    /// On two threads, with a progress line unless `quiet`. A picture that comes several times is read once.
    PictureCheck(const Show& show, bool quiet, Extent extent = Extent::All);

    /// Without doubles, in the order in which the film has them.
    const std::vector<BadPicture>& badPictures() const { return m_bad; }

    /// What to read a picture from; the name itself for a file.
    std::string source(const std::string& name) const;

    /// The name of a picture that is read from `source`.
    std::string nameOf(const std::string& source) const;

    /// Whether a picture of the show, by its number, is bad. Another one of the same name may be good, with
    /// other operations.
    bool isBad(std::size_t picture) const { return m_is_bad.at(picture); }

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    /// A picture of the show that has operations, or the first one of its name.
    struct Use {
        std::size_t picture = 0;
        BadPicture found = {}; ///< its `why` is empty while nothing is wrong
    };

    struct Input {
        std::string name;
        std::string why = {}; ///< it is bad; empty while it is not
        std::vector<Use> uses = {};
        std::unique_ptr<std::FILE, Close> copy = {};
    };

    void check(Input& input) const;
    void checkOperations(Input& input, const Platform::NSData& bytes) const;
    static void keepCopy(Input& input, const std::vector<std::uint8_t>& bytes);
    void checkAll(bool quiet);
    void noteBadPictures();

    const Show& m_show; ///< of which only the constructor makes use
    std::vector<Input> m_inputs;
    std::map<std::string, std::size_t> m_places; ///< of names in m_inputs
    std::vector<bool> m_is_bad;                  ///< by the pictures' numbers
    std::vector<BadPicture> m_bad;
};

} // namespace Imaging::Tool
