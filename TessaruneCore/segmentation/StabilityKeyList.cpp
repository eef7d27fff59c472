#include "TessaruneCore/segmentation/StabilityKeyList.h"

#include "TessaruneCore/segmentation/SentenceStabilityKey.h"

#include <utility>

namespace tessarune {

void StabilityKeyList::clear() {
    texts_.clear();
    keys_.clear();
    unchanged_.clear();
}

void StabilityKeyList::resize(std::size_t count) {
    previousCount_ = keys_.size();
    texts_.resize(count);
    keys_.resize(count);
    unchanged_.resize(count);
}

void StabilityKeyList::update(std::size_t index, std::string_view text) {
    const bool known = index < previousCount_;
    if (known && texts_[index] == text) {
        unchanged_[index] = true;
        return;
    }
    std::string key = SentenceStabilityKey::normalize(text);
    unchanged_[index] = known && keys_[index] == key;
    keys_[index] = std::move(key);
    texts_[index] = text;
}

} // namespace tessarune
