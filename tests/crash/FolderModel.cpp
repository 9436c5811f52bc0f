#include "FolderModel.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace crashtest {

std::string Folder::content(const std::string& name) const {
    const auto found = names.find(name);
    return found == names.end() ? "<missing>" : contents.at(found->second);
}

std::string Folder::key() const {
    std::map<int, std::string> firstName;
    std::ostringstream key;
    for (const auto& [name, file] : names) {
        firstName.emplace(file, name);
        key << name << '\0' << contents.at(file) << '\0' << firstName[file] << '\0';
    }
    return key.str();
}

Folder readFolder(const std::string& path) {
    Folder folder;
    std::map<ino_t, int> files;
    for (const auto& item : std::filesystem::directory_iterator(path)) {
        struct stat status {};
        const std::string name = item.path().filename();
        if (stat(item.path().c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
            continue;
        }
        const auto [found, added] = files.emplace(status.st_ino, static_cast<int>(files.size()));
        folder.names[name] = found->second;
        if (added) {
            std::ifstream in(item.path(), std::ios::binary);
            std::ostringstream content;
            content << in.rdbuf();
            folder.contents[found->second] = content.str();
        }
    }
    return folder;
}

void writeFolder(const std::string& path, const Folder& folder) {
    for (const auto& item : std::filesystem::directory_iterator(path)) {
        std::filesystem::remove_all(item.path());
    }
    std::map<int, std::string> written;
    for (const auto& [name, file] : folder.names) {
        const std::string target = path + "/" + name;
        const auto found = written.find(file);
        if (found != written.end()) {
            std::filesystem::create_hard_link(found->second, target);
            continue;
        }
        std::ofstream(target, std::ios::binary) << folder.contents.at(file);
        written[file] = target;
    }
}

FolderModel::FolderModel(const Folder& start) : m_names(start.names), m_flushedNames(start.names) {
    for (const auto& [file, content] : start.contents) {
        m_files[file] = File{content, content};
        m_nextFile = std::max(m_nextFile, file + 1);
    }
}

void FolderModel::apply(const JournalEntry& call) {
    if (call.result < 0) {
        return;
    }
    if (call.call == "open") {
        applyOpen(call);
    } else if (call.call == "write") {
        applyWrite(call);
    } else if (call.call == "ftruncate" && m_open.count(call.fd) != 0) {
        m_files[m_open[call.fd].file].data.resize(static_cast<size_t>(call.length));
    } else if (call.call == "fsync" || call.call == "fdatasync" || call.call == "sync") {
        applyFlush(call);
    } else if (call.call == "close") {
        m_open.erase(call.fd);
    } else if (call.call == "link") {
        change(ChangeKind::kLink, call.name, call.name2);
    } else if (call.call == "rename") {
        change(ChangeKind::kRename, call.name, call.name2);
    } else if (call.call == "unlink") {
        change(ChangeKind::kUnlink, call.name, "");
    }
}

void FolderModel::applyOpen(const JournalEntry& call) {
    if (call.name == ".") {
        m_open[call.fd] = Open{-1, 0};
        return;
    }
    auto found = m_names.find(call.name);
    if (found == m_names.end()) {
        m_files[m_nextFile] = File{};
        m_changes.push_back(Change{ChangeKind::kCreate, "", call.name, m_nextFile});
        applyChange(m_changes.back(), m_names);
        found = m_names.find(call.name);
        ++m_nextFile;
    } else if ((call.flags & O_TRUNC) != 0) {
        m_files[found->second].data.clear();
    }
    m_open[call.fd] = Open{found->second, 0};
}

void FolderModel::applyWrite(const JournalEntry& call) {
    const auto found = m_open.find(call.fd);
    if (found == m_open.end() || found->second.file < 0) {
        return;
    }
    Open& open = found->second;
    std::string& data = m_files[open.file].data;
    if (data.size() < open.offset + call.data.size()) {
        data.resize(open.offset + call.data.size());
    }
    data.replace(open.offset, call.data.size(), call.data);
    open.offset += call.data.size();
}

void FolderModel::applyFlush(const JournalEntry& call) {
    const bool all = call.call == "sync";
    const auto found = m_open.find(call.fd);
    if (!all && found == m_open.end()) {
        return;
    }
    const int flushed = all ? -1 : found->second.file;
    if (flushed < 0) {
        m_flushedNames = m_names;
        m_changes.clear();
    }
    for (auto& [id, file] : m_files) {
        if (all || id == flushed) {
            file.flushed = file.data;
        }
    }
}

void FolderModel::change(ChangeKind kind, const std::string& from, const std::string& to) {
    const auto found = m_names.find(from);
    m_changes.push_back(Change{kind, from, to, found == m_names.end() ? -1 : found->second});
    applyChange(m_changes.back(), m_names);
}

void FolderModel::applyChange(const Change& change, std::map<std::string, int>& names) {
    // A name the model never saw made: the journal misses a call, which the test finds when it
    // compares the model with the disk.
    if (change.kind != ChangeKind::kCreate && names.count(change.from) == 0) {
        return;
    }
    switch (change.kind) {
        case ChangeKind::kCreate:
            names[change.to] = change.file;
            break;
        case ChangeKind::kLink:
            names[change.to] = names.at(change.from);
            break;
        case ChangeKind::kRename:
            // Two names of one file: rename leaves both.
            if (names.count(change.to) == 0 || names[change.to] != names.at(change.from)) {
                names[change.to] = names.at(change.from);
                names.erase(change.from);
            }
            break;
        case ChangeKind::kUnlink:
            names.erase(change.from);
            break;
    }
}

Folder FolderModel::now() const {
    return folderOf(m_names, nullptr);
}

Folder FolderModel::afterPowerCut(size_t keptChanges, DataLoss loss) const {
    std::map<std::string, int> names = m_flushedNames;
    for (size_t i = 0; i < keptChanges && i < m_changes.size(); ++i) {
        applyChange(m_changes[i], names);
    }
    return folderOf(names, &loss);
}

Folder FolderModel::folderOf(const std::map<std::string, int>& names, DataLoss* loss) const {
    Folder folder;
    folder.names = names;
    for (const auto& [name, id] : names) {
        const File& file = m_files.at(id);
        std::string content = file.data;
        if (loss != nullptr) {
            content = file.flushed;
            if (*loss == DataLoss::kZeroed && content.size() < file.data.size()) {
                content.resize(file.data.size(), '\0');
            }
        }
        folder.contents[id] = content;
    }
    return folder;
}

}  // namespace crashtest
