// One block of text for each source: how its owner last arranged what is shown of it. Kept in files below
// "arrangements" of the user's configuration directory, named by a hash of the source's full path and holding
// that path, so that two paths of one hash don't meet. The newest 200 stay.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

class ArrangementStore {
  public:
    static constexpr size_t mostKept = 200;

    // Below this directory; empty means the user's configuration directory.
    explicit ArrangementStore(const std::string& directory = {});

    // The text saved last for the source; nothing when there is none or its file is damaged.
    std::optional<std::string> Load(const std::string& source) const;
    // Replaces the text of the source; an empty one takes it away. Then the oldest beyond 200 go. False with
    // a report when it can't be written.
    bool Save(const std::string& source, const std::string& text);

  private:
    std::string FileOf(const std::string& fullPath) const;
    void DropOldest(const std::string& except) const;

    std::string directory_;
};
