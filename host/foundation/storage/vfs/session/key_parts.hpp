#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/core/host_export.hpp"
#include "foundation/storage/vfs/provider.hpp"
#include "foundation/storage/vfs/session/key_spacing.hpp"
#include "foundation/storage/vfs/session/visibility.hpp"

namespace foundation::storage::vfs {

/// The pages of one listing of a flat store, which is read in parts side by side: each part begins at a path that is
/// likely to lie further on, and is paged through until it reaches the next part. The pages are delivered in order, and
/// together have each key once, wherever the parts begin. Where a part turns out to be long, another begins within it.
/// Pure bookkeeping: makes no request. Internal to the session.
class KORVAN_HOST_EXPORT KeyParts {
 public:
  /// A page to request, for a part.
  struct Fetch {
    std::uint64_t part;
    SubtreeRequest request;
  };

  /// Of the page that is wanted next.
  enum class State {
    ready,    ///< `take` returns it
    coming,   ///< it is being fetched
    missing,  ///< `fetchWanted` says how to request it
  };

  /// How much is fetched ahead.
  struct Limits {
    std::size_t inFlight;  ///< requests
    std::size_t memory;    ///< bytes, about, or that of one page
  };

  explicit KeyParts(Visibility const& visibility) : visibility_(visibility) {}

  /// Begins another listing, unless it is that of the request already; where the request begins doesn't matter.
  void select(SubtreeRequest const& request);

  /// Whether it is the listing of the request.
  bool isFor(SubtreeRequest const& request) const;

  /// Paths of folders, which end in "/": likely beginnings of parts.
  void addFolders(std::vector<std::string> const& folders);

  /// The page that begins as the request says is wanted next: usually the one after the page taken last, but it may be
  /// any other. If it is certain that all pages after it will be wanted too, they are fetched ahead at once, otherwise
  /// when some have been wanted one after the other.
  State seek(SubtreeRequest const& request, bool isCertain);

  /// The wanted page, when it is ready: paths after the one that it was wanted after.
  SubtreePage take();

  /// The request for the wanted page, when it is missing. Ends in `add` or `fail`.
  Fetch fetchWanted();

  /// A request for a page that will likely be wanted; nothing if none is known or the limits are reached. Ends in `add`
  /// or `fail`.
  std::optional<Fetch> fetchAhead(Limits limits);

  /// Whether `fetchAhead` may have one.
  bool mayFetchAhead(Limits limits) const;

  /// The page that was requested; ignored if it is no longer needed. May run out of memory: then `fail` must follow.
  void add(Fetch const& fetch, SubtreePage page);

  /// No further page of that part is fetched ahead.
  void fail(Fetch const& fetch) noexcept;

 private:
  struct Page {
    SubtreePage page;
    std::size_t memory;
    bool isTrimmed;     // the rest is the next part's
    std::string begin;  // the path that it was requested after
    std::string rest;   // the first path that was left out; may be empty
  };
  struct Part {
    std::uint64_t id;
    std::string begin;
    std::string position;
    std::string nextPage;
    std::deque<Page> ready{};
    std::string first{};  // path of the latest page, as of `last` and `spacing`
    std::string last{};
    KeySpacing spacing{};
    std::size_t pages = 0;  // fetched
    bool isBusy = false;
    bool isClosed = false;  // it has reached the next part, or the end
    bool hasFailed = false;

    void learnFrom(std::vector<std::string> const& paths);
  };
  using Parts = std::list<Part>;

  Parts::iterator insert(Parts::iterator next, std::string const& begin, std::string const& page);
  Parts::iterator find(Fetch const& fetch) noexcept;
  Fetch fetch(Part& part);
  void restart(std::string const& after);
  static bool continues(Page const& trimmed, Page const& following);
  void reopenFront();
  void eraseAfter(Parts::iterator part) noexcept;
  Page takeFront();
  std::optional<std::string> pastHidden(std::string const& path) const;
  std::size_t mostAhead(Limits limits) const noexcept;
  std::size_t pagesAhead() const noexcept;
  static std::size_t lengthOfParts(Limits limits) noexcept;
  static std::size_t indexAfter(std::vector<std::string> const& paths, std::string_view path);
  Parts::iterator split(Limits limits);
  std::string pointAfter(Parts::const_iterator part, std::size_t pages) const;

  Visibility const& visibility_;
  std::optional<SubtreeRequest> listing_;
  bool isCertain_ = false;
  Parts parts_;
  std::vector<std::string> folders_;
  bool hasJumped_ = false;  // whether another page than the next one was wanted
  std::size_t runBefore_ = 0;
  std::string start_;         // the path after which the pages in a row begin
  std::string wanted_;        // the path after which the wanted page begins
  std::size_t taken_ = 0;     // pages in a row
  std::size_t kept_ = 0;      // paths that were fetched
  std::size_t wasted_ = 0;    // the same, of pages that end in another part: paths that it has too
  std::size_t fullPage_ = 0;  // the paths of the fullest page
  std::size_t memory_ = 0;    // of those that are ready
  std::uint64_t lastId_ = 0;
  bool isIdle_ = false;  // nothing more is known to fetch ahead, for now
};

}  // namespace foundation::storage::vfs
