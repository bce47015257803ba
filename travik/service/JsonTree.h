#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Travik {

class JsonTree;

/// A value of a parsed document. Refers to its tree.
class JsonValue {
public:
    enum class Kind : unsigned char { Null, False, True, Integer, Natural, Real, Text, Array, Object };

    JsonValue(const JsonTree& tree, std::uint32_t index) : tree_(&tree), index_(index) {}

    Kind kind() const;
    bool isNull() const { return kind() == Kind::Null; }
    bool isText() const { return kind() == Kind::Text; }
    bool isArray() const { return kind() == Kind::Array; }
    bool isObject() const { return kind() == Kind::Object; }
    bool isNumber() const { return kind() >= Kind::Integer && kind() <= Kind::Real; }
    std::int64_t integer() const;  ///< of Kind::Integer: a whole number below 0
    std::uint64_t natural() const; ///< of Kind::Natural: a whole number from 0 on
    double number() const;         ///< of every number
    std::string_view text() const; ///< of a text; UTF-8

    /// Calls the function with each entry of an array.
    template <class Function>
    void forEachEntry(Function function) const {
        std::size_t i = 0;
        for (JsonValue entry = first(); entry.index_ != end(); entry = entry.next())
            function(i++, entry);
    }
    /// Calls the function with each name and value of an object, in the order of the document.
    template <class Function>
    void forEachMember(Function function) const {
        for (JsonValue name = first(); name.index_ != end(); name = name.next().next())
            function(name.text(), name.next());
    }

private:
    const JsonTree* tree_;
    std::uint32_t index_;

    JsonValue first() const { return {*tree_, index_ + 1}; }
    JsonValue next() const { return {*tree_, end()}; }
    std::uint32_t end() const; // index behind all that belongs to the value
};

/// A JSON document in one array of small nodes, in the order of the text: made and read in one go, whatever its depth.
class JsonTree {
public:
    /// Empty, or what is wrong with the text and where: that it is no JSON, or an object has two members of one name.
    /// Strict (RFC 8259), in linear time and without recursion.
    std::string parse(std::string_view text);

    JsonValue root() const { return {*this, 0}; }

private:
    friend class JsonValue;
    friend class JsonScanner;

    struct Node {
        JsonValue::Kind kind;
        std::uint32_t end; // index of the node behind an array or object; where a text ends in `texts_`
        union {
            std::uint64_t natural; // of texts: where they begin in `texts_`
            std::int64_t integer;
            double real;
        };
    };
    std::vector<Node> nodes_;
    std::string texts_;
};

inline JsonValue::Kind JsonValue::kind() const { return tree_->nodes_[index_].kind; }
inline std::int64_t JsonValue::integer() const { return tree_->nodes_[index_].integer; }
inline std::uint64_t JsonValue::natural() const { return tree_->nodes_[index_].natural; }
inline double JsonValue::number() const {
    switch (kind()) {
    case Kind::Integer:
        return static_cast<double>(integer());
    case Kind::Natural:
        return static_cast<double>(natural());
    default:
        return tree_->nodes_[index_].real;
    }
}
inline std::string_view JsonValue::text() const {
    const JsonTree::Node& node = tree_->nodes_[index_];
    return std::string_view(tree_->texts_).substr(node.natural, node.end - node.natural);
}
inline std::uint32_t JsonValue::end() const { return kind() >= Kind::Array ? tree_->nodes_[index_].end : index_ + 1; }

} // namespace Travik
