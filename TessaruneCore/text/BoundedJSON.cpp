#include "TessaruneCore/text/BoundedJSON.h"

#include <nlohmann/json.hpp>

namespace tessarune::BoundedJSON {

nlohmann::json parse(std::string_view text) {
    using Json = nlohmann::json;
    bool isTooDeep = false;
    Json value = Json::parse(
        text,
        [&](int depth, Json::parse_event_t, Json&) {
            isTooDeep = isTooDeep || depth > maximumDepth;
            return !isTooDeep;
        },
        false);
    return isTooDeep ? Json(Json::value_t::discarded) : value;
}

} // namespace tessarune::BoundedJSON
