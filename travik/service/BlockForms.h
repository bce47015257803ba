#pragma once

#include <travik/service/Values.h>

#include <cstddef>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

/// The stored layouts of all block classes, and how they refer to each other: what descriptions are written from.
namespace Travik {

/// Successive identifiers of one class that share a layout.
struct TRAVIK_SERVICE_EXPORT BlockForm {
    const CatalogueEntry* entry = nullptr;
    int first = 0;
    int last = 0;
    std::size_t size = 0; ///< bytes of a block, the header included
    BlockLayout layout;   ///< of the first identifier; those of the others differ in axis blocks only

    /// "200-209" or "2".
    std::string ids() const;
    /// UTF-8; empty where the class prints none.
    std::string key(int id) const { return toUtf8(entry->key(*entry, id)); }
    /// The keys of all its identifiers, each once, with commas between.
    std::string keys() const;
    /// Whether it begins with the four header words; the end block has an identifier and a data word only.
    bool hasHeader() const { return size >= sizeof(HwSDatablockHeader); }
};

/// The forms of every class of the catalogue.
class TRAVIK_SERVICE_EXPORT BlockForms {
public:
    BlockForms();

    /// In ascending order of identifiers.
    std::span<const BlockForm> all() const { return forms_; }

    /// The form of one identifier, `first` and `last` both that; its class must be in the catalogue.
    static BlockForm of(int id);

    /// What a field of the form is for, in one line of English: its role, which of its bits, what labels it, what
    /// counts it and where its elements lie when they do not follow each other.
    std::string purpose(const BlockForm& form, const Field& field) const;

private:
    std::vector<BlockForm> forms_;
    std::map<int, std::set<int>> labelled_; // identifiers of the blocks that each axis block labels

    std::string axisOf(const BlockForm& form, const Field& field, unsigned int dimension) const;
};

/// "200-209", "10", "2, 10", of identifiers in ascending order.
TRAVIK_SERVICE_EXPORT std::string idRanges(const std::set<int>& ids);

} // namespace Travik
