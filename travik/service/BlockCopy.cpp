#include <travik/service/BlockCopy.h>
#include <travik/service/BlockSelector.h>

#include <algorithm>
#include <iterator>
#include <set>

namespace Travik {

namespace {

using Blocks = std::vector<const ImageBlock*>;

constexpr std::string_view doubtfulEnd = "it is doubtful where the block ends, see verify";

bool isErased(char byte) { return byte == '\xFF' || byte == '\0'; }

bool isGlob(const BlockAddress& name) { return name.key.find_first_of("*?[") != std::string::npos; }

Blocks blocksWith(const ModuleImage& module, unsigned short id) {
    Blocks found;
    for (const ImageBlock& block : module.blocks()) {
        if (block.id == id && !block.isEnd())
            found.push_back(&block);
    }
    return found;
}

const ImageBlock* blockAt(const Blocks& blocks, std::size_t offset) {
    const auto found = std::ranges::find(blocks, offset, &ImageBlock::offset);
    return found == blocks.end() ? nullptr : *found;
}

/// What is called so, whatever offset it names; or why there is none.
struct Named {
    Blocks blocks;
    std::string why;
};

Named blocksNamed(const ModuleImage& module, const BlockAddress& name) {
    Named named;
    const BlockSelector selector({name.key});
    bool isEndMeant = false;
    for (const ImageBlock& block : module.blocks()) {
        if (!selector.selects(block))
            continue;
        if (block.isEnd())
            isEndMeant = true;
        else
            named.blocks.push_back(&block);
    }
    if (!named.blocks.empty())
        return named;
    const std::vector<std::string> misses = selector.misses(module);
    named.why = !misses.empty()               ? misses.front()
                : isEndMeant && !isGlob(name) ? "the end block stays where it is"
                                              : "no block " + name.key + " but the end block";
    return named;
}

/// A piece of an image, and what takes its place.
struct Piece {
    BlockEdit edit;
    std::size_t begin; // in the image as it was
    std::size_t end;
    std::span<const char> bytes;
};

void append(std::vector<char>& made, std::span<const char> bytes) {
    made.insert(made.end(), bytes.begin(), bytes.end());
}

/// Makes up for what the blocks need more or less than before with erased bytes behind the end block; where the rest of
/// the image begins.
std::size_t settle(std::vector<char>& made, std::span<const char> image, std::size_t end) {
    const char filler = end < image.size() && isErased(image[end]) ? image[end] : '\xFF';
    if (made.size() < end)
        made.resize(end, filler);
    std::size_t rest = end;
    while (rest < made.size() && rest < image.size() && image[rest] == filler)
        ++rest;
    return rest;
}

/// Replaces pieces of an image, which come in ascending order, and keeps its size where that can be.
void replacePieces(std::vector<char>& image, const ModuleImage& module, std::vector<Piece> pieces,
                   BlockReport& report) {
    const std::span<const char> old = image;
    std::vector<char> made;
    std::size_t taken = 0;
    for (Piece& piece : pieces) {
        append(made, old.subspan(taken, piece.begin - taken));
        piece.edit.isChange = !std::ranges::equal(old.subspan(piece.begin, piece.end - piece.begin), piece.bytes);
        if (piece.edit.kind != BlockEdit::Kind::Removed)
            piece.edit.offset = made.size();
        append(made, piece.bytes);
        taken = piece.end;
        report.edits.push_back(std::move(piece.edit));
    }
    const bool hasEnd = !module.blocks().empty() && module.blocks().back().isEnd();
    if (hasEnd) {
        append(made, old.subspan(taken, module.end() - taken));
        taken = settle(made, old, module.end());
    }
    append(made, old.subspan(taken));
    report.growth = static_cast<std::ptrdiff_t>(made.size()) - static_cast<std::ptrdiff_t>(old.size());
    image = std::move(made);
}

/// Takes name after name.
class Copier {
public:
    Copier(std::vector<char>& image, std::span<const char> source, const CopyOptions& options)
        : options_(options), original_(image), image_(image), source_(source), target_(original_) {}

    void take(const BlockAddress& name) {
        name_ = &name;
        const Named named = blocksNamed(source_, name);
        if (named.blocks.empty())
            return refuse(named.why, true);
        if (name.offset)
            return takeAt(named.blocks, *name.offset);
        std::set<unsigned short> seen;
        for (const ImageBlock* const block : named.blocks) {
            if (seen.insert(block->id).second)
                takeAll(blocksWith(source_, block->id), blocksWith(target_, block->id));
        }
    }

    BlockReport finish() {
        if (report_.succeeded()) {
            std::ranges::sort(pieces_, [](const Piece& left, const Piece& right) {
                return left.begin != right.begin ? left.begin < right.begin : left.bytes.data() < right.bytes.data();
            });
            replacePieces(image_, target_, std::move(pieces_), report_);
        }
        return std::move(report_);
    }

private:
    CopyOptions options_;
    const std::vector<char> original_;
    std::vector<char>& image_;
    ModuleImage source_;
    ModuleImage target_; // of the original
    const BlockAddress* name_ = nullptr;
    std::vector<Piece> pieces_;
    BlockReport report_;

    void refuse(std::string_view why, bool isOfSource = false) {
        report_.refusals.push_back({name_->text, std::string(why), isOfSource});
    }

    void takeAll(const Blocks& sources, const Blocks& targets) {
        const bool isPaired = sources.size() == targets.size();
        const bool isAppended = targets.size() < sources.size() && options_.appends;
        if (!isPaired && !isAppended && !targets.empty()) {
            report_.remedies.appends |= targets.size() < sources.size();
            return refuse("choose with KEY@OFFSET: " + placesOf(targets) + ", in the source " + placesOf(sources));
        }
        for (std::size_t i = 0; i < sources.size(); ++i)
            put(*sources[i], i < targets.size() ? targets[i] : nullptr);
    }

    void takeAt(const Blocks& called, std::size_t offset) {
        const ImageBlock* const source = blockAt(called, offset);
        if (!source) {
            const Blocks targets = blocksWith(target_, called.front()->id);
            const ImageBlock* const target = called.size() == 1 ? blockAt(targets, offset) : nullptr;
            return target ? put(*called.front(), target) : refuse("not there, but " + placesOf(called), true);
        }
        const Blocks sources = blocksWith(source_, source->id);
        const Blocks targets = blocksWith(target_, source->id);
        if (targets.empty())
            return put(*source, nullptr);
        const ImageBlock* target = targets.size() == 1 ? targets.front() : blockAt(targets, offset);
        if (sources.size() == targets.size())
            target = targets[static_cast<std::size_t>(std::ranges::find(sources, source) - sources.begin())];
        if (!target)
            return refuse("leaves open which block is meant: " + placesOf(targets));
        put(*source, target);
    }

    void put(const ImageBlock& source, const ImageBlock* target) {
        if (!isPlaced(source))
            return refuse(doubtfulEnd, true);
        if (!isSealed(source) && !options_.forces) {
            report_.remedies.forces = true;
            return refuse("the sums of block " + nameOf(source) + " do not hold", true);
        }
        if (target)
            replace(source, *target);
        else
            append(source);
    }

    void replace(const ImageBlock& source, const ImageBlock& target) {
        const std::size_t size = source.bytes.size();
        if (target.endsKnown && target.bytes.size() == size)
            return addPiece(source, target.offset, size);
        if (target.endsKnown && !isPlaced(target))
            return refuse(doubtfulEnd);
        if (!target.endsKnown && !options_.forces) {
            report_.remedies.forces = true;
            return refuse(doubtfulEnd);
        }
        // Behind a block whose end is not known nothing is known either.
        const std::size_t room =
            target.endsKnown ? target.bytes.size() : std::min(size, original_.size() - target.offset);
        if (room != size && !options_.resizes) {
            report_.remedies.resizes = true;
            return refuse("block " + nameOf(source) + " has " + std::to_string(room) + " bytes, in the source " +
                          std::to_string(size));
        }
        addPiece(source, target.offset, room);
    }

    void append(const ImageBlock& source) {
        if (!options_.appends) {
            report_.remedies.appends = true;
            return refuse("no block " + nameOf(source));
        }
        if (target_.blocks().empty())
            return refuse("there is no block at all");
        const ImageBlock& last = target_.blocks().back();
        if (!last.endsKnown && !last.isEnd())
            return refuse("it is doubtful where the last block ends, see verify");
        addPiece(source, last.isEnd() ? last.offset : target_.end(), 0);
    }

    void addPiece(const ImageBlock& source, std::size_t begin, std::size_t size) {
        for (const Piece& piece : pieces_) {
            const bool isSameSource = piece.bytes.data() == source.bytes.data();
            if (isSameSource && piece.begin == begin)
                return; // named twice
            if (isSameSource)
                return refuse("block " + nameOf(source) + " would be copied to two places");
            if (piece.begin < begin + size && begin < piece.end)
                return refuse("two blocks would take the place of block " + nameOf(source));
        }
        pieces_.push_back({.edit = {.kind = size == 0 ? BlockEdit::Kind::Added : BlockEdit::Kind::Replaced,
                                    .block = nameOf(source),
                                    .id = source.id,
                                    .offset = 0,
                                    .before = size,
                                    .after = source.bytes.size()},
                           .begin = begin,
                           .end = begin + size,
                           .bytes = source.bytes});
    }
};

std::string whyNotRemoved(const Blocks& blocks, const BlockAddress& name) {
    if (!name.offset && blocks.size() > 1 && !isGlob(name))
        return "more than one block: " + placesOf(blocks);
    return std::ranges::all_of(blocks, [](const ImageBlock* block) { return isPlaced(*block); })
               ? ""
               : std::string(doubtfulEnd);
}

} // namespace

BlockReport copyBlocks(std::vector<char>& image, std::span<const char> source, std::span<const BlockAddress> names,
                       const CopyOptions& options) {
    Copier copier(image, source, options);
    for (const BlockAddress& name : names)
        copier.take(name);
    return copier.finish();
}

BlockReport removeBlocks(std::vector<char>& image, std::span<const BlockAddress> names) {
    BlockReport report;
    const std::vector<char> original = image;
    const ModuleImage module(original);
    Blocks removed;
    for (const BlockAddress& name : names) {
        Named named = blocksNamed(module, name);
        if (named.why.empty() && name.offset) {
            const ImageBlock* const block = blockAt(named.blocks, *name.offset);
            if (block)
                named.blocks = {block};
            else
                named.why = "not there, but " + placesOf(named.blocks);
        }
        if (named.why.empty())
            named.why = whyNotRemoved(named.blocks, name);
        if (named.why.empty())
            std::ranges::copy(named.blocks, std::back_inserter(removed));
        else
            report.refusals.push_back({name.text, std::move(named.why)});
    }
    if (!report.succeeded())
        return report;
    std::ranges::sort(removed, {}, &ImageBlock::offset);
    removed.erase(std::unique(removed.begin(), removed.end()), removed.end());
    std::vector<Piece> pieces;
    for (const ImageBlock* const block : removed)
        pieces.push_back({.edit = {.kind = BlockEdit::Kind::Removed,
                                   .block = nameOf(*block),
                                   .id = block->id,
                                   .offset = block->offset,
                                   .before = block->bytes.size(),
                                   .after = 0},
                          .begin = block->offset,
                          .end = block->offset + block->bytes.size(),
                          .bytes = {}});
    replacePieces(image, module, std::move(pieces), report);
    return report;
}

} // namespace Travik
