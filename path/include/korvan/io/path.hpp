#pragma once

#include <string>
#include <utility>
#include <variant>

#include "fl/filesystem/basic_path.hpp"
#include "foundation/storage/vfs/absolute_iri.hpp"
#include "korvan/io/export.hpp"

namespace korvan::io::internal {

/// A file or folder: a path on the local file system (POSIX pathname), or a place in storage that an IRI names (RFC
/// 3987). One value type for both, compared and composed the same way; no operation switches a path from one kind to
/// the other. Texts are UTF-16.
///
/// Members don't look at disks or stores, but for `toIRI` of a relative local path, which asks for the process's
/// current folder. Those that take or give a path's content throw `std::bad_variant_access` for a path without a value,
/// as an assignment that failed while it switched kinds can leave one. Distinct paths may be used by different threads
/// at once.
class Path {
 public:
  /// What a path holds: a local path (index 0) or an IRI (index 1).
  using Location =
      std::variant<fl::filesystem::basic_path<char, char16_t, fl::filesystem::detail::path_traits<char, char16_t>>,
                   foundation::storage::vfs::AbsoluteIRI>;

  /// The empty local path.
  KORVAN_IO_EXPORT Path();

  /// A copy of the local path, its flag included.
  KORVAN_IO_EXPORT Path(
      fl::filesystem::basic_path<char, char16_t, fl::filesystem::detail::path_traits<char, char16_t>> const& path);

  /// A copy of the IRI.
  KORVAN_IO_EXPORT Path(foundation::storage::vfs::AbsoluteIRI const& iri);

  /// The IRI that the text writes, when the text begins with an IRI prefix ("scheme://"); otherwise the local path of
  /// the text, as it stands. A text with such a prefix is never taken for a local path: throws the storage layer's
  /// `InvalidIRIException` or `UnsupportedIRISchemeException` when it is no IRI that can be served.
  KORVAN_IO_EXPORT Path(std::u16string const& text);

  /// Whether this is a local path without text. An IRI is never empty.
  KORVAN_IO_EXPORT bool empty() const;

  /// The path as text, in native form. With `trailingSeparator` it ends in a separator: one is added where there is
  /// none. The empty path stays empty.
  KORVAN_IO_EXPORT std::u16string string(bool trailingSeparator) const;

  /// As `string`, with "/" between the elements of a local path whatever the native separator is.
  KORVAN_IO_EXPORT std::u16string generic(bool trailingSeparator) const;

  /// The path as an IRI; of scheme "file" (RFC 8089) for a local path. A relative local path is taken from the
  /// process's current folder. Throws what `foundation::storage::vfs::toAbsoluteIRI` throws.
  KORVAN_IO_EXPORT foundation::storage::vfs::AbsoluteIRI toIRI() const;

  /// A copy of what the path holds. Never throws `std::bad_variant_access`.
  KORVAN_IO_EXPORT Location location() const;

  /// Whether both are IRIs with the same written form, or local paths with the same text to the code unit. A local path
  /// never equals an IRI; flags don't matter; nothing is normalised. Paths without a value are equal. Never throws.
  KORVAN_IO_EXPORT bool operator==(Path const& other) const;
  KORVAN_IO_EXPORT bool operator!=(Path const& other) const;

  /// Adds the text as a further element and returns this path, which is unchanged when that throws. A local path gets
  /// one separator between, none after a root name or the empty path. For an IRI the text is decoded text below it, as
  /// `AbsoluteIRI(AbsoluteIRI const&, std::u16string const&)` takes it.
  KORVAN_IO_EXPORT Path& append(std::u16string const& text);

  /// The folder that holds this one, by its text: the path without its last element. The empty path where a local path
  /// has one element; the IRI itself where it has no parent. What ends in a separator loses only that.
  KORVAN_IO_EXPORT Path parent() const;

  /// The last element; empty where the path ends in a separator. Decoded for an IRI.
  KORVAN_IO_EXPORT std::u16string name() const;

 private:
  friend struct PathAccess;

  template <class Alternative>
  Path(std::in_place_t /*tag*/, Alternative&& location) : location_(std::forward<Alternative>(location)) {}

  Location location_;
};

/// A copy of the path with the text appended; see `Path::append`.
KORVAN_IO_EXPORT Path operator/(Path const& path, std::u16string const& text);

/// Whether the path names a place without reference to another: any IRI, and a local path that begins with "/". Its
/// text isn't expanded.
KORVAN_IO_EXPORT bool isAbsolute(Path const& p);

/// `p` made absolute against `base`. An IRI comes back unchanged, and `base` isn't looked at. A local path against a
/// local base is `fl::filesystem::absolute` of both (the empty path is the base itself, made absolute); against an IRI
/// it becomes an IRI: in the base's scheme where it is absolute, else below the base. At most one system call, for the
/// process's current folder. Throws what the local path library and the storage layer throw.
KORVAN_IO_EXPORT Path absolute(Path const& p, Path const& base);

/// `p` made absolute against `base` and resolved. A local path against a local base must exist, and its links are
/// followed (`fl::filesystem::canonical`); an IRI is resolved as text (`AbsoluteIRI::getResolvedIRI`), without a
/// request. Throws as `absolute`.
KORVAN_IO_EXPORT Path canonical(Path const& p, Path const& base);

/// The path that leads from `base` to `p`. Between local paths that of `fl::filesystem::relative`, which follows links.
/// As soon as one is an IRI both are compared as IRIs (a local `p` against an IRI base in the base's scheme, a local
/// base as a "file" IRI), as text; the empty path where no relative path leads from one to the other, as between
/// schemes.
KORVAN_IO_EXPORT Path relative(Path const& p, Path const& base);

/// Whether both paths name the same file or folder. Two local paths are looked up (`fl::filesystem::equivalent`, which
/// throws where nothing stands); as soon as one is an IRI, the resolved IRIs are compared as text, without a request.
/// The order doesn't matter.
KORVAN_IO_EXPORT bool isSameFile(Path const& a, Path const& b);

}  // namespace korvan::io::internal
