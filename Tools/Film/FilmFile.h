#pragma once

#include <string>

namespace Imaging::Tool {

/// A file that is written under a temporary name in its folder until all of it is there.
class FilmFile {
public:
    /// Makes the temporary file, which ends in `suffix`. Throws a Failure that names `path`.
    FilmFile(std::string path, const std::string& suffix);

    /// Removes the temporary file unless it has become the file.
    ~FilmFile();
    FilmFile(const FilmFile&) = delete;
    FilmFile& operator=(const FilmFile&) = delete;

    const std::string& path() const { return m_path; }
    const std::string& temporaryPath() const { return m_temporary; }

    /// The temporary file, open for writing; the caller closes it.
    int openTemporary() const;

    /// Puts the temporary file in the file's place. Throws a Failure.
    void commit();

    /// Removes the temporary file. Safe in signal handlers.
    void remove() noexcept;

private:
    std::string m_path;      ///< as it was given
    std::string m_target;    ///< where symbolic links lead
    std::string m_temporary; ///< never changes, for signal handlers
    bool m_committed = false;
};

} // namespace Imaging::Tool
