#include "foundation/storage/s3/s3_provider.hpp"

#include <algorithm>
#include <string>
#include <utility>

#include "foundation/storage/s3/object_location.hpp"
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

// The first page with a name in it, or the last page: a page may be empty although more follow.
ListPage firstNonEmptyPage(Client& client, ListRequest request, PageCheck& check, vfs::AbsoluteIRI const& location) {
  for (;;) {
    ListPage page = client.list(request, check, location);
    if (!page.truncated || !page.keys.empty() || !page.commonPrefixes.empty()) return page;
    request.continuationToken = std::move(page.continuationToken);
  }
}

// Whether any key begins with the prefix. For an empty prefix, whether the bucket exists: then the request succeeds.
bool anyKeyBelow(Client& client, std::string const& bucket, std::string const& prefix,
                 vfs::AbsoluteIRI const& location) {
  PageCheck check(prefix, false);
  ListRequest const request{.bucket = bucket, .prefix = prefix, .maximumKeys = 1};
  if (!prefix.empty()) return !firstNonEmptyPage(client, request, check, location).keys.empty();
  client.list(request, check, location);
  return true;
}

// What exists at the location; the facts of an object only if they are asked for.
std::optional<vfs::EntryFacts> lookUp(Client& client, ObjectLocation const& target, vfs::AbsoluteIRI const& location,
                                      bool withFacts) {
  vfs::EntryFacts const folder{.kind = vfs::EntryKind::folder};
  std::optional<vfs::EntryFacts> object;
  if (!target.folderOnly && !target.key.empty()) {
    PageCheck check(target.key, true);
    ListRequest const request{.bucket = target.bucket,
                              .prefix = target.key,
                              .delimited = true,
                              .maximumKeys = lookUpPageSize,
                              .withFacts = withFacts};
    ListPage const page = firstNonEmptyPage(client, request, check, location);
    if (contains(page.commonPrefixes, target.folderPrefix())) return folder;
    auto const found = std::find(page.keys.begin(), page.keys.end(), target.key);
    if (found != page.keys.end()) {
      object = withFacts ? page.facts[static_cast<std::size_t>(found - page.keys.begin())] : vfs::EntryFacts();
    }
    if (reachesPast(page, target.folderPrefix())) return object;
  }
  return anyKeyBelow(client, target.bucket, target.folderPrefix(), location) ? folder : object;
}

}  // namespace

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

vfs::PathKind S3Provider::kind(vfs::AbsoluteIRI const& location) {
  auto const found = find(location, false);
  if (!found) return vfs::PathKind::notFound;
  return found->kind == vfs::EntryKind::folder ? vfs::PathKind::isFolder : vfs::PathKind::isFile;
}

std::optional<vfs::EntryFacts> S3Provider::facts(vfs::AbsoluteIRI const& location) {
  return find(location, true);
}

std::optional<vfs::EntryFacts> S3Provider::find(vfs::AbsoluteIRI const& location, bool withFacts) {
  ObjectLocation const target = objectLocationOf(location);
  if (!target.canExist()) return std::nullopt;
  try {
    return lookUp(client(location), target, location, withFacts);
  } catch (vfs::Exception const& error) {
    if (error.getErrorCode() == static_cast<int>(vfs::ErrorCode::notFound)) return std::nullopt;
    throw;
  }
}

void S3Provider::list(vfs::AbsoluteIRI const& folder, std::string_view namePrefix, vfs::EntrySink& entries) {
  ObjectLocation const target = objectLocationOf(folder);
  bool found = target.canExist() && (target.key.empty() || !namePrefix.empty());
  if (target.canExist()) {
    std::string const folderPrefix = target.folderPrefix();
    ListRequest request{.bucket = target.bucket,
                        .prefix = folderPrefix + validUtf8Prefix(namePrefix),
                        .delimited = true,
                        .withFacts = entries.wantsFacts()};
    PageCheck check(request.prefix, true);
    for (bool more = true; more;) {
      ListPage page = client(folder).list(request, check, folder);
      found = found || !page.keys.empty() || !page.commonPrefixes.empty();
      auto const add = [&](std::string_view name, auto const& kindOrFacts) {
        if (nameablePrefix(name) == name) entries.add(name, kindOrFacts);
      };
      for (std::size_t i = 0; i < page.keys.size(); ++i) {
        std::string_view const name = std::string_view(page.keys[i]).substr(folderPrefix.size());
        request.withFacts ? add(name, page.facts[i]) : add(name, vfs::EntryKind::file);
      }
      for (std::string_view prefix : page.commonPrefixes) {
        prefix.remove_prefix(folderPrefix.size());
        prefix.remove_suffix(1);
        add(prefix, vfs::EntryKind::folder);
      }
      more = page.truncated;
      request.continuationToken = std::move(page.continuationToken);
    }
  }
  if (!found) throw vfs::Exception(vfs::ErrorCode::notFound, folder, "no such folder");
}

vfs::SubtreePage S3Provider::subtree(vfs::AbsoluteIRI const& folder, std::string_view prefix, std::string_view after,
                                     bool withFacts) {
  vfs::SubtreePage result;
  ObjectLocation const target = objectLocationOf(folder);
  if (!target.canExist()) return result;
  std::string const folderPrefix = target.folderPrefix();
  ListRequest request{
      .bucket = target.bucket, .prefix = folderPrefix + validUtf8Prefix(prefix), .withFacts = withFacts};
  // Skips the folder's own marker, which isn't a path below it.
  request.startAfter = folderPrefix + validUtf8Prefix(after);
  PageCheck check(request.prefix, false, request.startAfter);
  ListPage page;
  try {
    page = client(folder).list(request, check, folder);
  } catch (vfs::Exception const& error) {
    if (error.getErrorCode() == static_cast<int>(vfs::ErrorCode::notFound)) return result;
    throw;
  }
  if (!std::is_sorted(page.keys.begin(), page.keys.end()))
    throw vfs::Exception(vfs::ErrorCode::other, folder, "the store does not list keys in byte order");
  std::string_view reached = after;
  for (std::size_t i = 0; i < page.keys.size(); ++i) {
    std::string_view const key = std::string_view(page.keys[i]).substr(folderPrefix.size());
    // For a key that no path can name, the deepest folder above it that one can, unless a path in it came before.
    std::string_view const path = nameablePrefix(key);
    if (path <= reached || !path.starts_with(prefix)) continue;
    result.paths.emplace_back(path);
    if (withFacts) result.facts.push_back(page.facts[i]);
    reached = path;
  }
  result.last = !page.truncated;
  if (!page.keys.empty()) result.position = page.keys.back().substr(folderPrefix.size());
  return result;
}

}  // namespace foundation::storage::s3
