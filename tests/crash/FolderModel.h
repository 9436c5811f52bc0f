// A folder of files as a process sees it and as a power cut may leave it on the disk.
#ifndef TESTS_CRASH_FOLDERMODEL_H
#define TESTS_CRASH_FOLDERMODEL_H

#include <map>
#include <string>
#include <vector>

#include "FileCalls.h"

namespace crashtest {

// The regular files of a folder: each name with its file; names linked to one file share its id.
struct Folder {
    std::map<std::string, int> names;
    std::map<int, std::string> contents;

    // The file under `name`, or "<missing>".
    std::string content(const std::string& name) const;
    // What a reader can tell apart: names, contents and which names are links of one file.
    std::string key() const;
};

Folder readFolder(const std::string& path);
// Replaces everything in the folder at `path` by `folder`, links as links.
void writeFolder(const std::string& path, const Folder& folder);

// What a power cut does to the data written since the file's last flush.
enum class DataLoss {
    kTruncated,  // the file ends where its last flush left it
    kZeroed,     // the file keeps its length, the unflushed bytes read as zeros
};

// Replays the journal of the calls made on a folder, keeping apart what was flushed: a file's data
// by fsync, fdatasync or sync; the folder's names (created, linked, renamed, unlinked) by an fsync
// of the folder or by sync.
class FolderModel {
  public:
    // Starts from a folder whose files are all on the disk.
    explicit FolderModel(const Folder& start);

    void apply(const JournalEntry& call);
    // What the process sees, and what is left after it is killed.
    Folder now() const;
    // Changes of names since the folder was last flushed.
    size_t unflushedChanges() const { return m_changes.size(); }
    // The folder after a power cut that kept the first `keptChanges` of those changes.
    Folder afterPowerCut(size_t keptChanges, DataLoss loss) const;

  private:
    struct File {
        std::string data;
        std::string flushed;
    };
    enum class ChangeKind { kCreate, kLink, kRename, kUnlink };
    struct Change {
        ChangeKind kind;
        std::string from;
        std::string to;
        int file;
    };
    struct Open {
        int file;  // -1: the folder
        size_t offset;
    };

    void applyOpen(const JournalEntry& call);
    void applyWrite(const JournalEntry& call);
    void applyFlush(const JournalEntry& call);
    void change(ChangeKind kind, const std::string& from, const std::string& to);
    static void applyChange(const Change& change, std::map<std::string, int>& names);
    Folder folderOf(const std::map<std::string, int>& names, DataLoss* loss) const;

    std::map<int, File> m_files;
    std::map<std::string, int> m_names;
    std::map<std::string, int> m_flushedNames;
    std::vector<Change> m_changes;
    std::map<int, Open> m_open;
    int m_nextFile = 0;
};

}  // namespace crashtest

#endif
