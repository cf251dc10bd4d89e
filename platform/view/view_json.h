#pragma once

// View trees, colours and frames as JSON: the archive that crosses to a host, and what people read
// and write.

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>
#include "platform/base/color.h"
#include "platform/base/result.h"
#include "platform/view/view.h"

namespace platform {

/// A number as people write it: 1 rather than 1.0. What is not finite becomes null.
nlohmann::ordered_json numberJson(double value);

/// {"hex":"#1A1A22","alpha":1}; a grey-scale colour with equal parts, a colour without components as
/// clear white. Components are rounded to the nearest of 256 steps, alpha keeps its value.
nlohmann::ordered_json colorJson(const Color& color);
/// `alpha` is 1 where absent and is held within 0 to 1.
Result<Color> colorFromJson(const nlohmann::ordered_json& json);

/// {"text":…,"font":…,"color":…} or {"image":…}; without "color" where the run has none.
nlohmann::ordered_json textRunJson(const TextRun& run);

/// Pictures' bytes stand in the tree as base64 ("bytes").
nlohmann::ordered_json viewJson(const View& view);

/// Pictures' bytes are appended to `attachments` and stand in the tree as "attachment": index.
nlohmann::ordered_json viewJson(const View& view, std::vector<Bytes>& attachments);

/// Reads what `viewJson` wrote or a person did: at most 64 levels deep, 100,000 nodes, all numbers
/// finite (but "infinity" where it is allowed), fonts of at most 1000 points. Members that are not known,
/// such as "frame", are ignored; a type that is not known, or a value of the wrong kind, is an error (domain
/// "ViewError") that says where.
Result<View> viewFromJson(std::string_view text, const std::vector<Bytes>& attachments = {});

}  // namespace platform
