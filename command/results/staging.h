// New results on their way into a folder. They are written into a hidden folder inside it, and moved to their places
// once they are complete, so that the folder holds the old results, or the new, or is marked as stopped.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "folder_lock.h"
#include "written_files.h"

namespace kesto {

class Staging {
  public:
    // Locks the folder, which exists. Throws FolderBusy, or std::runtime_error when nothing can be written.
    explicit Staging(const std::string& folder);
    ~Staging();  // removes what was not moved, unless moves were begun and not completed
    Staging(const Staging&) = delete;
    Staging& operator=(const Staging&) = delete;

    const std::string& path() const { return path_; }  // of the hidden folder

    void stayLocked() { lock_->hold(); }

    // What a process that was killed among its moves had planned to leave; nothing when there was none.
    std::vector<WrittenFile> unfinished() const;

    // Writes the summary beside the files of the list, and brings all of it to the disk.
    void complete(const std::vector<WrittenFile>& files, const std::string& summary);

    // Moves the files into the folder and removes `old` ones that are not replaced. Moves that were begun before are
    // completed. A mark stands from the first move to the last, and the summary comes last.
    void moveIntoPlace(const std::vector<WrittenFile>& files, const std::vector<WrittenFile>& old);

    // Removes what another process has left.
    void clear();

    // True when STOPPED.txt is the mark of moves.
    static bool isMarked(const std::string& folder);

  private:
    bool move(const std::string& name, const std::string& to) const;  // false: there is no such file
    void sync(const std::string& path) const;

    std::string folder_, path_;
    std::unique_ptr<FileLock> lock_;
};

}  // namespace kesto
