#include <travik/service/JsonTree.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>

namespace Travik {

/// What the parser calls as it goes along.
class JsonTreeBuilder {
public:
    using number_integer_t = std::int64_t;
    using number_unsigned_t = std::uint64_t;
    using number_float_t = double;
    using string_t = std::string;
    using binary_t = nlohmann::json::binary_t;

    explicit JsonTreeBuilder(JsonTree& tree) : tree_(tree) {}

    const std::string& error() const { return error_; }

    bool null() { return add(Kind::Null); }
    bool boolean(bool value) { return add(value ? Kind::True : Kind::False); }
    bool number_integer(number_integer_t value) {
        add(Kind::Integer);
        tree_.nodes_.back().integer = value;
        return true;
    }
    bool number_unsigned(number_unsigned_t value) {
        add(Kind::Natural);
        tree_.nodes_.back().natural = value;
        return true;
    }
    bool number_float(number_float_t value, const string_t& /*text*/) {
        add(Kind::Real);
        tree_.nodes_.back().real = value;
        return true;
    }
    bool string(const string_t& value) {
        add(Kind::Text);
        tree_.nodes_.back().natural = tree_.texts_.size();
        tree_.texts_ += value;
        tree_.nodes_.back().end = static_cast<std::uint32_t>(tree_.texts_.size());
        return true;
    }
    bool binary(const binary_t& /*value*/) { return false; } // not in a text
    bool key(const string_t& name) { return string(name); }
    bool start_object(std::size_t /*size*/) { return open(Kind::Object); }
    bool start_array(std::size_t /*size*/) { return open(Kind::Array); }
    bool end_array() {
        close();
        return true;
    }
    bool end_object() {
        names_.clear();
        close().forEachMember([this](std::string_view name, JsonValue) { names_.push_back(name); });
        std::ranges::sort(names_);
        const auto twice = std::ranges::adjacent_find(names_);
        if (twice == names_.end())
            return true;
        error_ = "two members of one object are named \"" + std::string(*twice) + '"';
        return false;
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/, const nlohmann::detail::exception& what) {
        error_ = what.what();
        error_.erase(0, error_.find("] ") == std::string::npos ? 0 : error_.find("] ") + 2);
        error_.insert(0, "no JSON: ");
        return false;
    }

private:
    using Kind = JsonValue::Kind;

    JsonTree& tree_;
    std::string error_;
    std::vector<std::uint32_t> open_;
    std::vector<std::string_view> names_;

    bool add(Kind kind) {
        tree_.nodes_.push_back({kind, 0, {}});
        return true;
    }
    bool open(Kind kind) {
        open_.push_back(static_cast<std::uint32_t>(tree_.nodes_.size()));
        return add(kind);
    }
    JsonValue close() {
        const std::uint32_t index = open_.back();
        open_.pop_back();
        tree_.nodes_[index].end = static_cast<std::uint32_t>(tree_.nodes_.size());
        return {tree_, index};
    }
};

std::string JsonTree::parse(std::string_view text) {
    nodes_.clear();
    texts_.clear();
    // Of every node there are two characters at least, so that all indices are inside, too.
    if (text.size() > std::numeric_limits<std::uint32_t>::max())
        return "larger than 4 GiB";
    nodes_.reserve(text.size() / 8);
    JsonTreeBuilder builder(*this);
    nlohmann::json::sax_parse(text.begin(), text.end(), &builder);
    return builder.error();
}

} // namespace Travik
