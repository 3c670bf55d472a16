#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/core/host_export.hpp"

namespace foundation::storage::vfs {

/// Whether the text begins with a scheme (RFC 3986, 3.1: a letter, then letters, digits, "+", "-", ".") and "://".
/// Looks at the text only: whether a provider serves the scheme is checked when an `AbsoluteIRI` is made.
KORVAN_HOST_EXPORT bool hasIRIPrefix(std::u16string const& text) noexcept;

/// A location in storage, after RFC 3987 without query and fragment: scheme "://" authority path. A plain value.
///
/// Where a scheme's IRIs have an authority, such as a bucket, the IRI without one ("s3://") is the folder of all
/// authorities: its entries are theirs, and are joined to it as to any folder. It isn't their parent, though: each
/// authority is a root.
///
/// The text has one written form: the scheme in lower case; space, controls, `"<>\^{|}`, the backtick, "%", "#", "?"
/// and bytes that aren't UTF-8 percent-encoded with upper case hex; every other character, "*" included, as itself. Two
/// IRIs are equal when these texts are. Names are encoded on the way in and decoded on the way out, so callers see the
/// names that entries really have. No operation makes a request; the first use of a scheme may load its provider's
/// module.
class KORVAN_HOST_EXPORT AbsoluteIRI {
 public:
  /// The IRI that `text` denotes. A raw character that must be encoded in an IRI is encoded. Throws
  /// `InvalidIRIException` where the text has no meaning or would lose it: no prefix, "%" without two hex digits, a
  /// query, a fragment, or an authority or a path that the scheme's IRIs can't have. Throws `UnsupportedIRISchemeException`
  /// when no provider serves the scheme.
  explicit AbsoluteIRI(std::u16string const& text);

  /// The location that decoded text names below `base`, as an entry below a folder: each element is encoded, with
  /// exactly one "/" in between. A text that begins with "/" starts at the base's root, one with an IRI prefix replaces
  /// the base, the empty text is the base itself. "." and ".." stay as written, but before an authority's name they are
  /// dropped. Throws as the constructor from a text when the text has an IRI prefix, and `InvalidIRIException` when it
  /// has no byte form (see foundation/core/text/bytes.hpp).
  AbsoluteIRI(AbsoluteIRI const& base, std::u16string const& text);

  AbsoluteIRI(AbsoluteIRI const&) = default;
  AbsoluteIRI& operator=(AbsoluteIRI const&) = default;

  /// The moved-from IRI has the empty text, which names no location.
  AbsoluteIRI(AbsoluteIRI&& other) noexcept
      : text_(std::exchange(other.text_, {})),
        schemeLength_(std::exchange(other.schemeLength_, 0)),
        pathStart_(std::exchange(other.pathStart_, 0)) {}
  AbsoluteIRI& operator=(AbsoluteIRI&& other) noexcept {
    text_ = std::exchange(other.text_, {});
    schemeLength_ = std::exchange(other.schemeLength_, 0);
    pathStart_ = std::exchange(other.pathStart_, 0);
    return *this;
  }

  /// The written form.
  std::u16string const& toString() const noexcept { return text_; }

  /// The scheme, in lower case, without "://".
  std::u16string getScheme() const;

  /// The same. Valid as long as the IRI.
  std::u16string_view scheme() const noexcept { return std::u16string_view(text_).substr(0, schemeLength_); }

  /// The part between "://" and the path, as written; may be empty.
  std::u16string_view authority() const noexcept;

  /// The path as written, encoded: empty, or beginning with "/".
  std::u16string_view encodedPath() const noexcept;

  /// Whether this is the folder of all authorities of a scheme, such as "s3://". Its path is "/".
  bool isFolderOfAuthorities() const noexcept { return pathStart_ != 0 && pathStart_ == schemeLength_ + 2; }

  /// Whether the path has an element that `getParent` removes.
  bool hasParent() const noexcept;

  /// The IRI without its last element: ".../a" for ".../a/b" and for ".../a/"; the root with its "/" for an element
  /// directly below it. Without a parent: the IRI itself.
  AbsoluteIRI getParent() const;

  /// The last element, decoded; empty for a root and for an IRI that ends in "/".
  std::u16string getName() const;

  /// The same location with "." and ".." elements removed (RFC 3986, 5.2.4; ".." at the root is dropped), needless
  /// percent-encodings decoded, and empty elements and a final "/" dropped: no provider takes an empty element for a
  /// folder. The root keeps its "/". Pure text: links aren't followed.
  AbsoluteIRI getResolvedIRI() const;

  /// The decoded text that leads from `base` to this IRI, "." for the same location. Both are resolved first. Throws
  /// `std::runtime_error` between different schemes or authorities.
  std::u16string makePathRelativeTo(AbsoluteIRI const& base) const;

  /// Whether the written forms are the same; nothing is resolved.
  friend bool operator==(AbsoluteIRI const& a, AbsoluteIRI const& b) noexcept { return a.text_ == b.text_; }
  friend bool operator!=(AbsoluteIRI const& a, AbsoluteIRI const& b) noexcept { return a.text_ != b.text_; }

 private:
  friend struct IRIAccess;
  static AbsoluteIRI fromWrittenForm(std::u16string text, std::uint32_t schemeLength, std::uint32_t pathStart) noexcept;
  AbsoluteIRI() = default;
  void assignParsed(std::u16string const& text);

  std::u16string text_;
  std::uint32_t schemeLength_ = 0;
  // In the folder of all authorities the second "/" of "://" is also the path, so that it is a root like all others.
  std::uint32_t pathStart_ = 0;
};

}  // namespace foundation::storage::vfs
