#include <memory>
#include <optional>
#include <stdexcept>

#include "foundation/storage/vfs/conversion.hpp"
#include "fuzz/input.hpp"
#include "support/memory_provider.hpp"

namespace korvan::fuzz {
namespace {

namespace vfs = foundation::storage::vfs;
using vfs::AbsoluteIRI;

// Nothing if there is no such IRI.
template <class... Parts>
std::optional<AbsoluteIRI> parsed(Parts const&... parts) {
  try {
    return AbsoluteIRI(parts...);
  } catch (vfs::Exception const&) {
    return std::nullopt;
  }
}

void checkParts(AbsoluteIRI const& iri) {
  require(AbsoluteIRI(iri.toString()) == iri);
  require(AbsoluteIRI(iri, u"") == iri);

  AbsoluteIRI const resolved = iri.getResolvedIRI();
  require(AbsoluteIRI(resolved.toString()) == resolved && resolved.getResolvedIRI() == resolved);
  require(resolved.makePathRelativeTo(iri) == u".");

  AbsoluteIRI const parent = iri.getParent();
  require(iri.hasParent() ? parent.toString().size() < iri.toString().size() : parent == iri);
  if (iri.hasParent())
    require(parent.encodedPath().starts_with(u'/') && AbsoluteIRI(parent, iri.getName()).getResolvedIRI() == resolved);

  auto const path = fromAbsoluteIRI(iri);
  require(fromAbsoluteIRI(vfs::toAbsoluteIRI(iri.getScheme(), path)).native() == path.native());
}

void checkBelow(AbsoluteIRI const& iri, std::u16string const& text) {
  auto const below = parsed(iri, text);
  if (!below) return;
  checkParts(*below);
  bool const isName = !text.empty() && text.find(u'/') == std::u16string::npos;
  if (isName && iri.isFolderOfAuthorities()) {
    bool const isDotted = text == u"." || text == u"..";
    std::u16string const name = vfs::decodedElement(below->authority());
    require(isDotted ? *below == iri : test::toBytes(name) == test::toBytes(text));
  } else if (isName) {
    require(test::toBytes(below->getName()) == test::toBytes(text));
  }

  bool const areTogether = below->scheme() == iri.scheme() && below->authority() == iri.authority();
  try {
    AbsoluteIRI const there(iri.getResolvedIRI(), below->makePathRelativeTo(iri));
    require(areTogether && there.getResolvedIRI() == below->getResolvedIRI());
  } catch (std::runtime_error const&) {
    require(!areTogether);
  }
}

}  // namespace
}  // namespace korvan::fuzz

/// The written form of an IRI is parsed to the same IRI; names, relative paths and local paths lead back to it.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  using namespace korvan;
  static test::ServedScheme const store(
      u"store", std::make_shared<test::MemoryProvider>(
                    test::Tree(), test::MemoryProvider::Options{test::vfs::Provider::Authority::required}));
  FuzzedDataProvider input(data, size);
  char16_t const* const beginning = input.PickValueInArray({u"", u"file:///", u"store://", u"store://b/"});
  std::u16string const text = beginning + fuzz::takeText(input);
  if (auto const iri = fuzz::parsed(text)) {
    fuzz::checkParts(*iri);
    fuzz::checkBelow(*iri, fuzz::takeText(input));
  }
  return 0;
}
