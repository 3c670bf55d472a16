#include "foundation/storage/s3/s3_provider.hpp"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "foundation/core/text/bytes.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::s3 {
namespace {

// Enough for the names that usually sort between "key" and "key/", such as "key.txt" and "key-1".
constexpr unsigned lookUpPageSize = 100;

bool contains(std::vector<std::string> const& names, std::string const& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// Whether the listing up to the end of the page includes everything that sorts before the prefix or equals it.
bool reachesPast(ListPage const& page, std::string const& folderPrefix) {
  auto const sortsAfter = [&](std::string const& name) { return name > folderPrefix; };
  return !page.truncated || std::any_of(page.keys.begin(), page.keys.end(), sortsAfter) ||
         std::any_of(page.commonPrefixes.begin(), page.commonPrefixes.end(), sortsAfter);
}

// Calls `visit` with each path below the folder and its facts, in byte order if the page is. Of a key that no path can
// name, the deepest folder above it that one can is a path; the empty text is none.
template <class Visit>
void forEachPath(ListPage const& page, std::string const& folderPrefix, Visit visit) {
  vfs::EntryFacts const file;
  vfs::EntryFacts const folder{.kind = vfs::EntryKind::folder};
  auto const visitPath = [&](std::string_view name, vfs::EntryFacts const& facts) {
    std::string_view const path = nameablePrefix(name.substr(folderPrefix.size()));
    if (!path.empty()) visit(path, facts);
  };
  auto prefix = page.commonPrefixes.begin();
  for (std::size_t i = 0; i < page.keys.size(); ++i) {
    for (; prefix != page.commonPrefixes.end() && *prefix < page.keys[i]; ++prefix) visitPath(*prefix, folder);
    visitPath(page.keys[i], page.facts.empty() ? file : page.facts[i]);
  }
  for (; prefix != page.commonPrefixes.end(); ++prefix) visitPath(*prefix, folder);
}

bool isAbsence(vfs::Exception const& error) {
  return error.getErrorCode() == static_cast<int>(vfs::ErrorCode::notFound);
}

}  // namespace

// The pages of one request for a list.
class S3Provider::Pages {
 public:
  Pages(S3Provider& provider, ListRequest request, vfs::AbsoluteIRI const& location)
      : provider_(provider),
        client_(provider.client(location)),
        request_(std::move(request)),
        location_(location),
        check_(request_.prefix, request_.delimited, firstName(request_), request_.continuationToken) {}

  bool more() const noexcept { return more_; }

  // The next page: one request. The absence of the bucket concerns its root, and is a failure once it has answered.
  ListPage next() {
    ListPage page;
    try {
      page = client_.list(request_, check_, location_);
    } catch (vfs::Exception const& error) {
      if (!isAbsence(error)) throw;
      if (hasAnswered_) throw vfs::Exception(vfs::ErrorCode::other, location_, error.reason());
      throw vfs::Exception(vfs::ErrorCode::notFound, vfs::AbsoluteIRI(location_, u"/"), error.reason());
    }
    hasAnswered_ = true;
    if (!check_.isOrdered()) provider_.isUnordered_ = true;
    more_ = page.truncated;
    request_.continuationToken = page.continuationToken;
    return page;
  }

  // The first page with a name in it, or the last page: a page may be empty although more follow.
  ListPage nextNonEmpty() {
    for (;;) {
      ListPage page = next();
      if (!more_ || !page.keys.empty() || !page.commonPrefixes.empty()) return page;
    }
  }

 private:
  // No name of the listing is less. A key below a common prefix, or that prefix, is followed by the prefix again.
  static std::string firstName(ListRequest const& request) {
    std::size_t const end = request.delimited ? request.startAfter.find('/', request.prefix.size()) : std::string::npos;
    return request.startAfter.substr(0, end);
  }

  S3Provider& provider_;
  Client& client_;
  ListRequest request_;
  vfs::AbsoluteIRI const& location_;
  PageCheck check_;
  bool more_ = true;
  bool hasAnswered_ = false;
};

S3Provider::S3Provider(MakeClient makeClient) : makeClient_(std::move(makeClient)) {}

Client& S3Provider::client(vfs::AbsoluteIRI const& location) {
  core::threads::MutexLock const lock(mutex_);
  try {
    if (!client_) client_ = makeClient_();
  } catch (ConfigurationError const& error) {
    throw vfs::Exception(vfs::ErrorCode::other, location, error.what());
  }
  return *client_;
}

// The names of all of the account's buckets.
std::vector<std::string> S3Provider::buckets(vfs::AbsoluteIRI const& account) {
  std::vector<std::string> names;
  PageCheck check({}, true);
  std::string token;
  do {
    ListPage page;
    try {
      page = client(account).listBuckets(token, check, account);
    } catch (vfs::Exception const& error) {
      // As absence it would end the search as if the account had no buckets.
      if (isAbsence(error)) throw vfs::Exception(vfs::ErrorCode::other, account, error.reason());
      throw;
    }
    std::move(page.keys.begin(), page.keys.end(), std::back_inserter(names));
    token = std::move(page.continuationToken);
  } while (!token.empty());
  return names;
}

// Whether any key begins with the prefix. For an empty prefix, whether the bucket exists: then the request succeeds.
bool S3Provider::anyKeyBelow(ObjectLocation const& target, vfs::AbsoluteIRI const& location) {
  Pages pages(*this, {.bucket = target.bucket, .prefix = target.folderPrefix(), .maximumKeys = 1}, location);
  if (target.key.empty()) return pages.next(), true;
  return !pages.nextNonEmpty().keys.empty();
}

vfs::PathKind S3Provider::kind(vfs::AbsoluteIRI const& location) {
  auto const found = find(location, false);
  if (!found) return vfs::PathKind::notFound;
  return found->kind == vfs::EntryKind::folder ? vfs::PathKind::isFolder : vfs::PathKind::isFile;
}

std::optional<vfs::EntryFacts> S3Provider::facts(vfs::AbsoluteIRI const& location) {
  return find(location, true);
}

std::optional<vfs::EntryFacts> S3Provider::find(vfs::AbsoluteIRI const& location, bool withFacts) {
  vfs::EntryFacts const folder{.kind = vfs::EntryKind::folder};
  if (location.isFolderOfAuthorities()) return buckets(location), folder;
  ObjectLocation const target = objectLocationOf(location);
  if (!target.canExist()) return std::nullopt;
  std::optional<vfs::EntryFacts> object;
  if (!target.folderOnly && !target.key.empty()) {
    ListRequest const request{.bucket = target.bucket,
                              .prefix = target.key,
                              .delimited = true,
                              .maximumKeys = lookUpPageSize,
                              .withFacts = withFacts};
    ListPage const page = Pages(*this, request, location).nextNonEmpty();
    if (contains(page.commonPrefixes, target.folderPrefix())) return folder;
    auto const found = std::find(page.keys.begin(), page.keys.end(), target.key);
    if (found != page.keys.end()) {
      object = withFacts ? page.facts[static_cast<std::size_t>(found - page.keys.begin())] : vfs::EntryFacts();
    }
    if (!page.truncated || (!isUnordered_ && reachesPast(page, target.folderPrefix()))) return object;
  }
  return anyKeyBelow(target, location) ? folder : object;
}

void S3Provider::list(vfs::AbsoluteIRI const& folder, std::string_view namePrefix, vfs::EntrySink& entries) {
  if (folder.isFolderOfAuthorities()) {
    for (std::string const& bucket : buckets(folder)) entries.add(bucket, vfs::EntryKind::folder);
    return;
  }
  ObjectLocation const target = objectLocationOf(folder);
  std::string const folderPrefix = target.folderPrefix();
  bool const mustExist = !target.canExist() || (!target.key.empty() && namePrefix.empty());
  bool found = false;
  if (target.canExist()) {
    Pages pages(*this,
                {.bucket = target.bucket,
                 .prefix = folderPrefix + core::text::validUtf8Prefix(namePrefix),
                 .delimited = true,
                 .withFacts = entries.wantsFacts()},
                folder);
    while (pages.more()) {
      ListPage const page = pages.next();
      found = found || !page.keys.empty() || !page.commonPrefixes.empty();
      forEachPath(page, folderPrefix, [&](std::string_view path, vfs::EntryFacts const& facts) {
        if (path.ends_with('/')) path.remove_suffix(1);
        entries.wantsFacts() ? entries.add(path, facts) : entries.add(path, facts.kind);
      });
    }
  }
  if (mustExist && !found) throw vfs::Exception(vfs::ErrorCode::notFound, folder, "no such folder");
}

vfs::SubtreePage S3Provider::subtree(vfs::SubtreeRequest const& request) {
  vfs::SubtreePage result;
  ObjectLocation const target = objectLocationOf(request.folder);
  if (!target.canExist()) return result;
  result.isOrdered = !isUnordered_;
  if (!result.isOrdered) return result;
  std::string const folderPrefix = target.folderPrefix();
  ListRequest list{.bucket = target.bucket,
                   .prefix = folderPrefix + core::text::validUtf8Prefix(request.prefix),
                   .continuationToken = request.page,
                   .delimited = request.isDelimited,
                   .withFacts = request.withFacts};
  // Keys below the folder needn't include its own marker, which isn't a path below it.
  if (!request.isDelimited || !request.after.empty())
    list.startAfter = folderPrefix + core::text::validUtf8Prefix(request.after);
  ListPage const page = Pages(*this, std::move(list), request.folder).next();
  result.isOrdered = !isUnordered_;
  if (!result.isOrdered) return result;
  result.folderExists = target.key.empty() || !page.keys.empty() || !page.commonPrefixes.empty();
  std::string_view reached = request.after;
  forEachPath(page, folderPrefix, [&](std::string_view path, vfs::EntryFacts const& facts) {
    // A key that no path can name adds nothing to a path that came before.
    if (path <= reached || !path.starts_with(request.prefix)) return;
    reached = path;
    result.paths.emplace_back(path);
    if (request.withFacts) result.facts.push_back(facts);
  });
  result.last = !page.truncated;
  result.nextPage = page.continuationToken;
  for (auto const* const names : {&page.keys, &page.commonPrefixes})
    if (!names->empty())
      result.position = std::max({request.after, result.position, names->back().substr(folderPrefix.size())});
  return result;
}

}  // namespace foundation::storage::s3
