#pragma once

// A display list as text: what a person compares, and what a test keeps as the expected picture.

#include <string>
#include "host/layout/display_list.h"

namespace host {

/// "14,54.3 49.3x13.3": the corner and the size, to a hundredth of a point.
std::string rectText(const Rect& rect);

/// One item on one line, without a line end: what it is, its frame, then what differs from the usual.
///
///     text "NIFTY 50" 14,54.3 49.3x13.3 SFCompactDisplay-Medium 13 #FFFFFF
///     text "a" 14,20 12x10 system 10 bold #FFFFFF + image "Up" limit 2 lines 2 alignment center
///     image "Logo" 35,40 30x20 radius 4 within 40,40 20x20
///     picture 5120 bytes 9f86d081884c7d65 14,10 60x40
///     fill #FF0000@0.5 45,45 10x10 own 0.5 opacity 0.25
///     stroke #FF0000 45,45 10x10 width 1
///     begin 0.5
///     end 0.5
///
/// "own" and "opacity" are left out where they are 1. Every clip has its own "within". A text's first
/// run comes before the frame and the others follow after "+". The number after the bytes is a hash.
std::string displayItemText(const DisplayItem& item);

/// The widget on the first line, then its own address, its links and its items, one a line:
///
///     NewsWidget systemMedium 338x158 background #1A1A21
///     opens https://example.com
///     link 14,54.3 49.3x13.3 https://example.com/1
///
/// Every line ends with a line end.
std::string displayListText(const DisplayList& list);

}  // namespace host
