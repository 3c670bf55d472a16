#include "foundation/storage/s3/s3_provider.hpp"

#include <algorithm>
#include <string>
#include <utility>

#include "foundation/storage/s3/object_location.hpp"
#include "foundation/storage/vfs/storage_exception.hpp"

namespace foundation::storage::s3 {
namespace {

// Enough for the names that usually sort between "key" and "key/", such as "key.txt" and "key-1".
constexpr unsigned namesAroundKey = 100;

bool contains(std::vector<std::string> const& names, std::string const& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// Whether a page of the names that begin with a key reaches past the place where the folder of that key would stand.
bool tellsOfFolder(ListPage const& page, std::string const& folderPrefix) {
  auto const past = [&](std::string const& name) { return name > folderPrefix; };
  return !page.truncated || std::any_of(page.keys.begin(), page.keys.end(), past) ||
         std::any_of(page.commonPrefixes.begin(), page.commonPrefixes.end(), past);
}

// The first page that holds a name, or the last one: a page may be empty and more follow.
ListPage firstNames(Store& store, ListRequest request, PageCheck& check, vfs::AbsoluteIRI const& location) {
  for (;;) {
    ListPage page = store.list(request, check, location);
    if (!page.truncated || !page.keys.empty() || !page.commonPrefixes.empty()) return page;
    request.continuationToken = std::move(page.continuationToken);
  }
}

// Whether anything begins with the prefix; for an empty one whether the bucket is there, which the store tells by an
// answer at all.
bool standsBelow(Store& store, std::string const& bucket, std::string const& prefix, vfs::AbsoluteIRI const& location) {
  PageCheck check(prefix, false);
  ListRequest const request{.bucket = bucket, .prefix = prefix, .maximumKeys = 1};
  if (!prefix.empty()) return !firstNames(store, request, check, location).keys.empty();
  store.list(request, check, location);
  return true;
}

vfs::PathKind kindOf(Store& store, Place const& place, vfs::AbsoluteIRI const& location) {
  auto const folderOr = [&](vfs::PathKind otherwise) {
    return standsBelow(store, place.bucket, place.folderPrefix(), location) ? vfs::PathKind::isFolder : otherwise;
  };
  if (place.folderOnly || place.key.empty()) return folderOr(vfs::PathKind::notFound);

  PageCheck check(place.key, true);
  ListPage const page =
      firstNames(store, {.bucket = place.bucket, .prefix = place.key, .delimited = true, .maximumKeys = namesAroundKey},
                 check, location);
  if (contains(page.commonPrefixes, place.folderPrefix())) return vfs::PathKind::isFolder;
  auto const otherwise = contains(page.keys, place.key) ? vfs::PathKind::isFile : vfs::PathKind::notFound;
  return tellsOfFolder(page, place.folderPrefix()) ? otherwise : folderOr(otherwise);
}

}  // namespace

Provider::Provider(MakeStore makeStore) : makeStore_(std::move(makeStore)) {}

Store& Provider::store(vfs::AbsoluteIRI const& location) {
  std::lock_guard const lock(mutex_);
  try {
    if (!store_) store_ = makeStore_();
  } catch (ConfigurationError const& error) {
    throw vfs::Exception(vfs::ErrorCode::other, location, error.what());
  }
  return *store_;
}

vfs::PathKind Provider::kind(vfs::AbsoluteIRI const& location) {
  Place const place = placeOf(location);
  if (!place.possible()) return vfs::PathKind::notFound;
  try {
    return kindOf(store(location), place, location);
  } catch (vfs::Exception const& error) {
    if (error.getErrorCode() == static_cast<int>(vfs::ErrorCode::notFound)) return vfs::PathKind::notFound;
    throw;
  }
}

void Provider::list(vfs::AbsoluteIRI const& folder, std::string_view namePrefix, vfs::EntrySink& entries) {
  Place const place = placeOf(folder);
  bool found = place.possible() && (place.key.empty() || !namePrefix.empty());
  if (place.possible()) {
    std::string const folderPrefix = place.folderPrefix();
    ListRequest request{.bucket = place.bucket, .prefix = folderPrefix + utf8Part(namePrefix), .delimited = true};
    PageCheck check(request.prefix, true);
    for (bool more = true; more;) {
      ListPage page = store(folder).list(request, check, folder);
      found = found || !page.keys.empty() || !page.commonPrefixes.empty();
      auto const add = [&](std::string_view name, vfs::EntryKind kind) {
        if (nameablePart(name) == name) entries.add(name, kind);
      };
      for (std::string_view const key : page.keys) add(key.substr(folderPrefix.size()), vfs::EntryKind::file);
      for (std::string_view prefix : page.commonPrefixes) {
        prefix.remove_prefix(folderPrefix.size());
        prefix.remove_suffix(1);
        add(prefix, vfs::EntryKind::folder);
      }
      more = page.truncated;
      request.continuationToken = std::move(page.continuationToken);
    }
  }
  if (!found) throw vfs::Exception(vfs::ErrorCode::notFound, folder, "there is no such folder");
}

vfs::SubtreePage Provider::subtree(vfs::AbsoluteIRI const& folder, std::string_view prefix, std::string_view after) {
  vfs::SubtreePage result;
  Place const place = placeOf(folder);
  if (!place.possible()) return result;
  std::string const folderPrefix = place.folderPrefix();
  ListRequest request{.bucket = place.bucket, .prefix = folderPrefix + utf8Part(prefix)};
  // Never before the folder's own marker, which is no path below it.
  request.startAfter = folderPrefix + utf8Part(after);
  PageCheck check(request.prefix, false, request.startAfter);
  ListPage page;
  try {
    page = store(folder).list(request, check, folder);
  } catch (vfs::Exception const& error) {
    if (error.getErrorCode() == static_cast<int>(vfs::ErrorCode::notFound)) return result;
    throw;
  }
  if (!std::is_sorted(page.keys.begin(), page.keys.end()))
    throw vfs::Exception(vfs::ErrorCode::other, folder, "the store doesn't list its keys in order");
  std::string_view reached = after;
  for (std::string_view key : page.keys) {
    key.remove_prefix(folderPrefix.size());
    // Of a key that can't be named, the folder that holds it is told, unless a path in it was.
    std::string_view const path = nameablePart(key);
    if (path <= reached || !path.starts_with(prefix)) continue;
    result.paths.emplace_back(path);
    reached = path;
  }
  result.last = !page.truncated;
  if (!page.keys.empty()) result.position = page.keys.back().substr(folderPrefix.size());
  return result;
}

}  // namespace foundation::storage::s3
