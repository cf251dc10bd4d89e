#pragma once

// The page that shows the sheet's pictures side by side.

#include <nlohmann/json_fwd.hpp>
#include <string>
#include "platform/view/screen.h"

namespace host {

/// Puts `data` into `page`, which is resources/gallery/index.html and describes in its script what it reads.
/// The sizes and outlines of the families are added. No text in `data` can end the element that holds it.
std::string sheetPage(std::string page, nlohmann::ordered_json data, const platform::Screen& screen);

}  // namespace host
