#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/detail/folder_snapshot.hpp"
#include "foundation/storage/vfs/session/failure_log.hpp"
#include "foundation/storage/vfs/session/search_states.hpp"

namespace foundation::storage::vfs {

/// What a search is predicted to read, in the order in which it does so: depth first, entries in listing order. Several
/// reads may be taken before the first of them is made: each leaves its position in the order, where what it predicts
/// will be. Internal to the session.
class KORVAN_HOST_EXPORT PendingReads {
 public:
  using Question = FailureLog::Question;

  /// What one folder predicts: listings of its subfolders, or lookups of names in them. The names are copies, since the
  /// thread that requested a snapshot may change it.
  class KORVAN_HOST_EXPORT Group {
   public:
    explicit Group(AbsoluteIRI folder) : folder_(std::move(folder)) {}

    /// What a folder with these states predicts; nothing if the search ends there. Links and entries of unknown kind
    /// are left out, so no cycle of links is followed. With `lookupsOnly` listings are left out too.
    static std::optional<Group> below(FolderSnapshot const& folder, SearchStates const& search,
                                      SearchStates::Set states, bool lookupsOnly);

    /// Adds what the search reads in the subfolder of that name, which has these states.
    void add(SearchStates const& search, SearchStates::Set states, std::string_view name);

    bool empty() const noexcept { return reads_.empty(); }
    std::size_t memory() const noexcept { return names_.capacity() + reads_.capacity() * sizeof(Read); }

   private:
    friend class PendingReads;
    struct Read {
      std::uint32_t name;          // where the subfolder's name begins
      std::uint32_t length;        // of the subfolder's name
      std::uint32_t lookupLength;  // of "/" and the name to be looked up in it; 0 for a listing of the subfolder
      bool isTaken;
      SearchStates::Set states;  // at what is read, if that is a folder
      Question question() const noexcept { return lookupLength == 0 ? Question::entries : Question::kind; }
    };
    std::string_view nameOf(Read const& read) const noexcept {
      return std::string_view(names_).substr(read.name, read.length);
    }
    std::string_view pathOf(Read const& read) const noexcept {
      return std::string_view(names_).substr(read.name, read.length + read.lookupLength);
    }
    Read* find(std::string_view path);

    AbsoluteIRI folder_;
    std::string names_;
    std::vector<Read> reads_;  // those that precede the descent, in listing order, then the others, in listing order
    std::size_t preceding_ = 0;
    std::size_t next_ = 0;
  };
  using Position = std::list<Group>::iterator;

  struct Taken {
    Question question;
    AbsoluteIRI location;
    SearchStates::Set states;  ///< at the location, if it is a folder
    Position position;
  };

  /// Takes the read that is needed soonest; nothing if none is known.
  std::optional<Taken> takeNext();

  /// Takes a read that the search requests: its states, or nothing if it wasn't predicted. Reads that the same folder
  /// predicted before it are forgotten, as the search has passed them.
  std::optional<SearchStates::Set> takeRequested(Question question, AbsoluteIRI const& location);

  /// Puts what a requested read predicts before everything else.
  void enterFirst(Group predicted);

  /// Puts what a read predicts at its position: nothing if it failed or predicts nothing.
  void enter(Position position, std::optional<Group> predicted) noexcept;

  /// Forgets everything, and thus all positions.
  void clear() noexcept;

  std::size_t size() const noexcept { return size_; }

 private:
  void take(Position group, Group::Read& read) noexcept;

  std::list<Group> groups_;  // an empty one for each read that was taken and not entered yet
  std::size_t size_ = 0;
};

}  // namespace foundation::storage::vfs
