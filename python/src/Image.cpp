#include "Image.h"

#include <travik/service/ImageWriter.h>

namespace Python {

Image::Image(std::vector<char> bytes, std::string path)
    : path_(std::move(path)), state_(std::make_shared<const ImageState>(std::move(bytes))), saved_(state_) {}

StatePtr Image::state() const {
    const std::lock_guard lock(mutex_);
    if (!state_)
        throw ClosedError();
    return state_;
}

void Image::close() {
    StatePtr state, saved; // let go without the lock
    const std::lock_guard lock(mutex_);
    state.swap(state_);
    saved.swap(saved_);
}

bool Image::isClosed() const {
    const std::lock_guard lock(mutex_);
    return !state_;
}

bool Image::isModified() const {
    const std::lock_guard lock(mutex_);
    if (!state_)
        throw ClosedError();
    return state_ != saved_ && state_->bytes() != saved_->bytes();
}

void Image::edit(const std::function<bool(std::vector<char>&)>& change) {
    const std::lock_guard one(editing_);
    std::vector<char> bytes = state()->bytes();
    if (!change(bytes))
        return;
    auto next = std::make_shared<const ImageState>(std::move(bytes));
    const std::lock_guard lock(mutex_);
    if (!state_)
        throw ClosedError();
    state_.swap(next);
}

Image::Saved Image::save(const std::optional<std::string>& path, const std::optional<std::string>& backup) {
    if (!path && path_.empty())
        throw NoPathError();
    if (!path || (!path_.empty() && Travik::isSameFile(*path, path_)))
        return saveInPlace(backup);
    const StatePtr written = state();
    Travik::WriteReport report = Travik::writeImageFile(*path, written->bytes(), {.backup = backup});
    if (!report.succeeded())
        throw FileError{std::move(report.error), *path};
    return {std::move(report.backup), std::move(report.warnings)};
}

Image::Saved Image::saveInPlace(const std::optional<std::string>& backup) {
    const std::lock_guard one(editing_);
    const StatePtr written = state();
    StatePtr known;
    {
        const std::lock_guard lock(mutex_);
        known = saved_;
    }
    Travik::ImageEdit edit(path_);
    if (!edit.error().empty())
        throw FileError{edit.error(), path_};
    if (!known || edit.original() != known->bytes())
        throw ChangedError{path_};
    edit.bytes() = written->bytes();
    Travik::WriteReport report = edit.commit({.backup = backup});
    if (!report.succeeded())
        throw FileError{std::move(report.error), path_};
    const std::lock_guard lock(mutex_);
    if (state_)
        saved_ = written;
    return {std::move(report.backup), std::move(report.warnings)};
}

} // namespace Python
