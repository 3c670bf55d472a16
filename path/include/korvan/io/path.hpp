#pragma once

#include <string>
#include <utility>
#include <variant>

#include "fl/filesystem/basic_path.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"
#include "korvan/io/export.hpp"

namespace korvan::io::internal {

/// The path of a file or folder: a local path (POSIX pathname) or a location in storage, named by an IRI (RFC 3987).
/// One value type for both, compared and composed in the same way; no operation turns a path of one kind into the
/// other. Texts are UTF-16.
///
/// Members don't access disks or stores, except `toIRI` of a relative local path, which asks for the process's current
/// folder. Members that read or change the content throw `std::bad_variant_access` for a path without a value, which a
/// failed assignment between the two kinds can leave behind. Different threads may use different paths at once.
class Path {
 public:
  /// The content of a path: a local path (index 0) or an IRI (index 1).
  using Location =
      std::variant<fl::filesystem::basic_path<char, char16_t, fl::filesystem::detail::path_traits<char, char16_t>>,
                   foundation::storage::vfs::AbsoluteIRI>;

  /// The empty local path.
  KORVAN_IO_EXPORT Path();

  /// A copy of the local path, including its flag.
  KORVAN_IO_EXPORT Path(
      fl::filesystem::basic_path<char, char16_t, fl::filesystem::detail::path_traits<char, char16_t>> const& path);

  /// A copy of the IRI.
  KORVAN_IO_EXPORT Path(foundation::storage::vfs::AbsoluteIRI const& iri);

  /// An IRI if the text begins with an IRI prefix ("scheme://"), otherwise the local path with exactly this text. A
  /// text with such a prefix is never taken as a local path: if it isn't a valid IRI or no provider serves its
  /// scheme, throws the storage layer's `InvalidIRIException` or `UnsupportedIRISchemeException`.
  KORVAN_IO_EXPORT Path(std::u16string const& text);

  /// Whether this is a local path with an empty text. An IRI is never empty.
  KORVAN_IO_EXPORT bool empty() const;

  /// The path as text, in native form. With `trailingSeparator`, a separator is added unless the text ends in one
  /// or is empty.
  KORVAN_IO_EXPORT std::u16string string(bool trailingSeparator) const;

  /// As `string`, with "/" between the elements of a local path whatever the native separator is.
  KORVAN_IO_EXPORT std::u16string generic(bool trailingSeparator) const;

  /// The path as an IRI; a local path becomes one of scheme "file" (RFC 8089), a relative one being resolved against
  /// the process's current folder. Throws what `foundation::storage::vfs::toAbsoluteIRI` throws.
  KORVAN_IO_EXPORT foundation::storage::vfs::AbsoluteIRI toIRI() const;

  /// A copy of the content. Never throws `std::bad_variant_access`.
  KORVAN_IO_EXPORT Location location() const;

  /// Whether both are IRIs with the same written form, or local paths with the same code units. A local path never
  /// equals an IRI, flags are ignored, and nothing is normalised. Paths without a value are equal. Never throws.
  KORVAN_IO_EXPORT bool operator==(Path const& other) const;
  KORVAN_IO_EXPORT bool operator!=(Path const& other) const;

  /// Appends the text as a further element and returns this path; if that throws, the path is unchanged. In a local
  /// path one separator is put in between, none after a root name or the empty path. For an IRI the text is not
  /// percent-encoded; it is interpreted as by `AbsoluteIRI(AbsoluteIRI const&, std::u16string const&)`.
  KORVAN_IO_EXPORT Path& append(std::u16string const& text);

  /// The parent folder, by the text alone: the path without its last element. The empty path if a local path has only
  /// one element; the IRI itself if it has no parent. A path that ends in a separator loses only that.
  KORVAN_IO_EXPORT Path parent() const;

  /// The last element, decoded for an IRI; empty if the path ends in a separator.
  KORVAN_IO_EXPORT std::u16string name() const;

 private:
  friend struct PathAccess;

  template <class Alternative>
  Path(std::in_place_t /*tag*/, Alternative&& location) : location_(std::forward<Alternative>(location)) {}

  Location location_;
};

/// A copy of the path with the text appended; see `Path::append`.
KORVAN_IO_EXPORT Path operator/(Path const& path, std::u16string const& text);

/// Whether the path is absolute: any IRI is, and so is a local path that begins with "/". The text isn't expanded.
KORVAN_IO_EXPORT bool isAbsolute(Path const& p);

/// `p` made absolute against `base`. An IRI is returned unchanged, and `base` is then ignored. For a local path and a
/// local base, `fl::filesystem::absolute` of both (the empty path is the base itself, made absolute). Against an IRI
/// a local path becomes an IRI: in the base's scheme if it is absolute, otherwise below the base. At most one system
/// call, for the process's current folder. Throws what the local path library and the storage layer throw.
KORVAN_IO_EXPORT Path absolute(Path const& p, Path const& base);

/// `p` made absolute against `base` and resolved. A local path against a local base must exist, and its links are
/// followed (`fl::filesystem::canonical`); an IRI is resolved as text (`AbsoluteIRI::getResolvedIRI`), without a
/// request. Throws as `absolute` does.
KORVAN_IO_EXPORT Path canonical(Path const& p, Path const& base);

/// The relative path from `base` to `p`. Between local paths, `fl::filesystem::relative`, which follows links. If
/// either is an IRI, both are compared as the texts of IRIs (a local `p` in the scheme of an IRI base, a local base
/// as a "file" IRI); the result is the empty path if there is no relative path, as between schemes.
KORVAN_IO_EXPORT Path relative(Path const& p, Path const& base);

/// Whether both paths name the same file or folder. Two local paths are looked up (`fl::filesystem::equivalent`,
/// which throws if either doesn't exist); if either path is an IRI, the resolved IRIs are compared as text, without
/// a request. Symmetric.
KORVAN_IO_EXPORT bool isSameFile(Path const& a, Path const& b);

}  // namespace korvan::io::internal
