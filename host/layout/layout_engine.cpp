#include "host/layout/layout_engine.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <span>
#include <utility>
#include "host/layout/spacing.h"

namespace host {
namespace {

namespace node = platform::node;
using platform::Alignment;
using platform::HorizontalAlignment;
using platform::infinity;
using platform::Size;
using platform::VerticalAlignment;

/// What a view without a natural size takes where nothing is specified.
constexpr double unspecifiedLength = 10.0;
constexpr double defaultSpacerLength = 8.0;

struct Point {
    double x = 0.0;
    double y = 0.0;
};

/// A modifier's content: what it is offered, where it goes, and what the modifier answers for both.
struct Wrapping {
    Proposal proposal;
    Answer answer;
    Point offset;
};

/// The items of an arranging node in their order.
struct Arrangement {
    Answer answer;
    std::vector<Proposal> proposals;
    std::vector<Point> offsets;
};

double along(Axis axis, const Size& size) { return axis == Axis::horizontal ? size.width : size.height; }
const std::optional<double>& along(Axis axis, const Proposal& proposal) {
    return axis == Axis::horizontal ? proposal.width : proposal.height;
}
Axis across(Axis axis) { return axis == Axis::horizontal ? Axis::vertical : Axis::horizontal; }

Proposal makeProposal(Axis axis, std::optional<double> length, std::optional<double> breadth) {
    return axis == Axis::horizontal ? Proposal{length, breadth} : Proposal{breadth, length};
}

double guide(const Answer& answer, HorizontalAlignment alignment) {
    switch (alignment) {
        case HorizontalAlignment::leading: return 0.0;
        case HorizontalAlignment::center: return answer.size.width / 2.0;
        case HorizontalAlignment::trailing: return answer.size.width;
    }
    return 0.0;
}

/// The baseline of a view without text is its foot.
double guide(const Answer& answer, VerticalAlignment alignment) {
    switch (alignment) {
        case VerticalAlignment::top: return 0.0;
        case VerticalAlignment::center: return answer.size.height / 2.0;
        case VerticalAlignment::bottom: return answer.size.height;
        case VerticalAlignment::firstTextBaseline: return answer.firstBaseline.value_or(answer.size.height);
        case VerticalAlignment::lastTextBaseline: return answer.lastBaseline.value_or(answer.size.height);
    }
    return 0.0;
}

/// Where `inner` goes in `outer` when their guides are lined up.
Point alignedOffset(const Answer& outer, const Answer& inner, const Alignment& alignment) {
    return {guide(outer, alignment.horizontal) - guide(inner, alignment.horizontal),
            guide(outer, alignment.vertical) - guide(inner, alignment.vertical)};
}

/// The extent of views that are lined up by one guide each.
struct AlignedExtent {
    double before = 0.0;
    double after = 0.0;

    void add(double guide, double length) {
        before = std::max(before, guide);
        // Infinite answers occur while a stack finds out how flexible its items are.
        after = std::max(after, std::isinf(length) ? length : length - guide);
    }
    double length() const { return before + after; }
};

void takeBaselines(Answer& answer, const Answer& item, double top) {
    if (!item.firstBaseline || !item.lastBaseline) return;
    const double first = top + *item.firstBaseline;
    const double last = top + *item.lastBaseline;
    answer.firstBaseline = std::min(answer.firstBaseline.value_or(first), first);
    answer.lastBaseline = std::max(answer.lastBaseline.value_or(last), last);
}

/// A limit of a frame, when it is one: not negative and a number; only a maximum may be infinite.
std::optional<double> limit(const std::optional<double>& length, bool mayBeInfinite = false) {
    if (!length || !(*length >= 0.0)) return std::nullopt;
    if (std::isinf(*length)) return mayBeInfinite ? length : std::nullopt;
    return boundedLength(*length);
}

struct Range {
    std::optional<double> minimum;
    std::optional<double> maximum;

    /// The minimum wins over a smaller maximum.
    double clamped(double length) const {
        if (maximum) length = std::min(length, *maximum);
        if (minimum) length = std::max(length, *minimum);
        return length;
    }
    std::optional<double> offered(const std::optional<double>& proposal) const {
        if (!proposal) return std::nullopt;
        return clamped(*proposal);
    }
    double answer(const std::optional<double>& proposal, double content) const {
        if (!proposal) return clamped(content);
        if (minimum && maximum) return clamped(*proposal);
        if (maximum) return std::min(std::max(*proposal, content), *maximum);
        if (minimum) return std::max(std::min(*proposal, content), *minimum);
        return content;
    }
};

std::optional<double> lessInsets(const std::optional<double>& proposal, double insets) {
    if (!proposal) return std::nullopt;
    return std::max(0.0, *proposal - insets);
}

/// The largest size of a ratio within the proposal, or the smallest that covers it.
Proposal proposalOfRatio(const Proposal& proposal, double ratio, platform::ContentMode mode) {
    if (!proposal.width) return {*proposal.height * ratio, proposal.height};
    if (!proposal.height) return {proposal.width, *proposal.width / ratio};
    const double widthByHeight = *proposal.height * ratio;
    const bool isWide = *proposal.width > widthByHeight;
    const bool takesHeight = mode == platform::ContentMode::fit ? isWide : !isWide;
    if (takesHeight) return {widthByHeight, proposal.height};
    return {proposal.width, *proposal.width / ratio};
}

class LayoutEngine {
public:
    LayoutEngine(std::vector<LayoutNode>& nodes, const Size& widgetSize, const Measurer& measurer)
        : nodes_(nodes),
          widgetSize_(widgetSize),
          measurer_(measurer),
          probesLeft_(500'000 + 20 * nodes.size()) {}

    void run() {
        if (!nodes_.front().isAbsent) {
            const Answer widget{.size = widgetSize_, .firstBaseline = {}, .lastBaseline = {}};
            const Proposal proposal{widgetSize_.width, widgetSize_.height};
            place(0, alignedOffset(widget, measure(0, proposal), {}), proposal);
        }
        frameDissolvedGroups();
    }

private:
    Answer measure(std::size_t index, const Proposal& proposal) {
        LayoutNode& node = nodes_[index];
        if (node.arranging != Arranging::none) return measureArranged(node, proposal);
        return std::visit([&](const auto& kind) { return answer(node, kind, proposal); }, *node.kind);
    }

    void place(std::size_t index, Point origin, const Proposal& proposal) {
        LayoutNode& node = nodes_[index];
        const Answer answered = measure(index, proposal);
        node.frame = {finite(origin.x), finite(origin.y), finite(answered.size.width),
                      finite(answered.size.height)};
        origin = {node.frame.x, node.frame.y};
        if (node.arranging != Arranging::none) {
            const Arrangement arrangement = arrange(node, proposal);
            for (std::size_t i = 0; i < node.items.size(); ++i) {
                const Point& offset = arrangement.offsets[i];
                place(node.items[i], {origin.x + offset.x, origin.y + offset.y}, arrangement.proposals[i]);
            }
        } else if (const auto* text = std::get_if<node::Text>(node.kind)) {
            node.text = measuredText(node, *text, proposal);
        } else if (!node.children.empty()) {
            placeContent(node, origin, proposal, answered);
        }
    }

    void placeContent(const LayoutNode& node, const Point& origin, const Proposal& proposal,
                      const Answer& answered) {
        const Wrapping wrapping = std::visit(
            [&](const auto& kind) { return wrap(node.children.front(), kind, proposal); }, *node.kind);
        place(node.children.front(), {origin.x + wrapping.offset.x, origin.y + wrapping.offset.y},
              wrapping.proposal);
        if (const auto* overlay = std::get_if<node::Overlay>(node.kind)) {
            placeLayer(node, origin, answered, overlay->alignment);
        }
        if (const auto* background = std::get_if<node::Background>(node.kind)) {
            placeLayer(node, origin, answered, background->alignment);
        }
        if (const auto* background = std::get_if<node::ContainerBackground>(node.kind)) {
            const Answer widget{.size = widgetSize_, .firstBaseline = {}, .lastBaseline = {}};
            placeLayer(node, {}, widget, background->alignment);
        }
    }

    void placeLayer(const LayoutNode& node, const Point& origin, const Answer& decorated,
                    const Alignment& alignment) {
        const std::size_t layer = node.children[1];
        if (nodes_[layer].isAbsent) return;
        const Proposal proposal{decorated.size.width, decorated.size.height};
        const Point offset = alignedOffset(decorated, measure(layer, proposal), alignment);
        place(layer, {origin.x + offset.x, origin.y + offset.y}, proposal);
    }

    /// The frame of a group within a stack surrounds its children.
    void frameDissolvedGroups() {
        for (std::size_t i = nodes_.size(); i-- > 0;) {
            LayoutNode& node = nodes_[i];
            const bool isDissolved =
                std::holds_alternative<node::Group>(*node.kind) && node.arranging == Arranging::none;
            if (!isDissolved || node.isAbsent) continue;
            double left = infinity, top = infinity, right = -infinity, bottom = -infinity;
            for (const std::size_t item : node.items) {
                const Rect& frame = nodes_[item].frame;
                left = std::min(left, frame.x);
                top = std::min(top, frame.y);
                right = std::max(right, frame.x + frame.width);
                bottom = std::max(bottom, frame.y + frame.height);
            }
            node.frame = {left, top, right - left, bottom - top};
        }
    }

    // Views without children.

    Answer answer(LayoutNode& node, const node::Text& text, const Proposal& proposal) {
        const TextMeasure measured = measuredText(node, text, proposal);
        return {measured.size, measured.firstBaseline, measured.lastBaseline};
    }
    Answer answer(LayoutNode&, const node::Image& image, const Proposal& proposal) {
        const std::optional<Size> natural = naturalSize(image);
        if (!natural) return {};
        if (!image.isResizable) return {*natural, {}, {}};
        return {{proposal.width.value_or(natural->width), proposal.height.value_or(natural->height)}, {}, {}};
    }
    Answer answer(LayoutNode&, const node::ColorFill&, const Proposal& proposal) {
        return {filled(proposal), {}, {}};
    }
    Answer answer(LayoutNode&, const node::RoundedRectangle&, const Proposal& proposal) {
        return {filled(proposal), {}, {}};
    }
    /// One pixel thick, across the stack that it stands in.
    Answer answer(LayoutNode& node, const node::Divider&, const Proposal& proposal) {
        Size size = filled(proposal);
        (node.axis == Axis::horizontal ? size.width : size.height) = 1.0 / measurer_.scale();
        return {size, {}, {}};
    }
    Answer answer(LayoutNode& node, const node::Spacer& spacer, const Proposal& proposal) {
        const double minimum = std::max(0.0, boundedLength(spacer.minLength.value_or(defaultSpacerLength)));
        const auto flexible = [&](const std::optional<double>& length) {
            return std::max(minimum, length.value_or(minimum));
        };
        Size size{flexible(proposal.width), flexible(proposal.height)};
        if (node.axis == Axis::horizontal) size.height = 0.0;
        if (node.axis == Axis::vertical) size.width = 0.0;
        return {size, {}, {}};
    }

    static Size filled(const Proposal& proposal) {
        return {proposal.width.value_or(unspecifiedLength), proposal.height.value_or(unspecifiedLength)};
    }

    std::optional<Size> naturalSize(const node::Image& image) const {
        if (image.bytes) {
            if (const std::optional<Size> size = measurer_.picture(*image.bytes)) return size;
        }
        return measurer_.asset(image.name);
    }

    /// A text that fits answers the same to every larger proposal, so few questions reach the fonts.
    const TextMeasure& measuredText(LayoutNode& node, const node::Text& text, const Proposal& proposal) {
        const auto finiteOrNone = [](const std::optional<double>& length) {
            return length && std::isinf(*length) ? std::nullopt : length;
        };
        const auto fits = [](const std::optional<double>& room, double length) {
            return !room || *room >= length;
        };
        const Proposal room{finiteOrNone(proposal.width), finiteOrNone(proposal.height)};
        const TextMeasure& natural = askedText(node, text, {});
        const bool isWideEnough = fits(room.width, natural.size.width);
        if (isWideEnough && fits(room.height, natural.size.height)) return natural;
        const Proposal asHighAsItLikes{isWideEnough ? std::nullopt : room.width, std::nullopt};
        const double height = askedText(node, text, asHighAsItLikes).size.height;
        if (fits(room.height, height)) return askedText(node, text, asHighAsItLikes);
        return askedText(node, text, {asHighAsItLikes.width, room.height});
    }

    const TextMeasure& askedText(LayoutNode& node, const node::Text& text, const Proposal& proposal) {
        const auto known = std::ranges::find(node.texts, proposal, &LayoutNode::KnownText::proposal);
        if (known != node.texts.end()) return known->measure;
        TextMeasure measure = measurer_.text(text.runs, text.lineLimit, proposal.width, proposal.height);
        measure.size = {boundedLength(measure.size.width), boundedLength(measure.size.height)};
        measure.firstBaseline = boundedLength(measure.firstBaseline);
        measure.lastBaseline = boundedLength(measure.lastBaseline);
        node.texts.push_back({proposal, measure});
        return node.texts.back().measure;
    }

    // Modifiers.

    template <typename Modifier>
    Answer answer(LayoutNode& node, const Modifier& modifier, const Proposal& proposal) {
        return node.children.empty() ? Answer{} : wrap(node.children.front(), modifier, proposal).answer;
    }

    /// Most modifiers leave layout alone.
    template <typename Modifier>
    Wrapping wrap(std::size_t content, const Modifier&, const Proposal& proposal) {
        return {proposal, measure(content, proposal), {}};
    }

    Wrapping wrap(std::size_t content, const node::Padding& padding, const Proposal& proposal) {
        const double leading = boundedLength(padding.insets.leading);
        const double top = boundedLength(padding.insets.top);
        const double horizontal = leading + boundedLength(padding.insets.trailing);
        const double vertical = top + boundedLength(padding.insets.bottom);
        const Proposal inner{lessInsets(proposal.width, horizontal), lessInsets(proposal.height, vertical)};
        const Answer inside = measure(content, inner);
        Answer outside{.size = {std::max(0.0, inside.size.width + horizontal),
                                std::max(0.0, inside.size.height + vertical)},
                       .firstBaseline = {},
                       .lastBaseline = {}};
        takeBaselines(outside, inside, top);
        return {inner, outside, {leading, top}};
    }

    Wrapping wrap(std::size_t content, const node::Frame& frame, const Proposal& proposal) {
        const bool isFixed = frame.width || frame.height;
        const std::optional<double> width = limit(frame.width);
        const std::optional<double> height = limit(frame.height);
        Range horizontal{limit(frame.minWidth), limit(frame.maxWidth, true)};
        Range vertical{limit(frame.minHeight), limit(frame.maxHeight, true)};
        if (isFixed) horizontal = vertical = {};

        const Proposal inner{width ? width : horizontal.offered(proposal.width),
                             height ? height : vertical.offered(proposal.height)};
        const Answer inside = measure(content, inner);
        Answer outside{.size = {width.value_or(horizontal.answer(proposal.width, inside.size.width)),
                                height.value_or(vertical.answer(proposal.height, inside.size.height))},
                       .firstBaseline = {},
                       .lastBaseline = {}};
        const Point offset = alignedOffset(outside, inside, frame.alignment);
        takeBaselines(outside, inside, offset.y);
        return {inner, outside, offset};
    }

    Wrapping wrap(std::size_t content, const node::AspectRatio& aspect, const Proposal& proposal) {
        const Size ideal = measure(content, {}).size;
        double ratio = aspect.ratio.value_or(ideal.width / ideal.height);
        if (!std::isfinite(ratio) || ratio <= 0.0) return {proposal, measure(content, proposal), {}};
        ratio = std::clamp(ratio, 1e-4, 1e4);
        const bool isUnspecified = !proposal.width && !proposal.height;
        const Proposal within = isUnspecified ? Proposal{ideal.width, ideal.height} : proposal;
        const Proposal inner = proposalOfRatio(within, ratio, aspect.contentMode);
        return {inner, measure(content, inner), {}};
    }

    Wrapping wrap(std::size_t content, const node::FixedSize& fixed, const Proposal& proposal) {
        const Proposal inner{fixed.horizontal ? std::nullopt : proposal.width,
                             fixed.vertical ? std::nullopt : proposal.height};
        return {inner, measure(content, inner), {}};
    }

    // Stacks.

    Answer measureArranged(LayoutNode& node, const Proposal& proposal) {
        const auto known = std::ranges::find(node.answers, proposal, &LayoutNode::KnownAnswer::proposal);
        if (known != node.answers.end()) return known->answer;
        const Answer answered = arrange(node, proposal).answer;
        node.answers.push_back({proposal, answered});
        return answered;
    }

    Arrangement arrange(LayoutNode& node, const Proposal& proposal) {
        probesLeft_ -= std::min(probesLeft_, node.items.size());
        if (node.arranging == Arranging::pile) return pile(node, proposal);
        const Axis axis = node.arranging == Arranging::row ? Axis::horizontal : Axis::vertical;
        return lineUp(node, axis, shareOut(node, axis, proposal));
    }

    Arrangement pile(const LayoutNode& node, const Proposal& proposal) {
        const auto* stack = std::get_if<node::ZStack>(node.kind);
        const Alignment alignment = stack != nullptr ? stack->alignment : Alignment{};
        AlignedExtent horizontal;
        AlignedExtent vertical;
        std::vector<Answer> answers;
        answers.reserve(node.items.size());
        for (const std::size_t item : node.items) {
            const Answer& answered = answers.emplace_back(measure(item, proposal));
            horizontal.add(guide(answered, alignment.horizontal), answered.size.width);
            vertical.add(guide(answered, alignment.vertical), answered.size.height);
        }
        Arrangement result;
        result.answer.size = {horizontal.length(), vertical.length()};
        result.proposals.assign(node.items.size(), proposal);
        for (const Answer& answered : answers) {
            const Point& offset =
                result.offsets.emplace_back(Point{horizontal.before - guide(answered, alignment.horizontal),
                                                  vertical.before - guide(answered, alignment.vertical)});
            takeBaselines(result.answer, answered, offset.y);
        }
        return result;
    }

    /// What each item of a row or column is offered, in the order of the items.
    std::vector<Proposal> shareOut(LayoutNode& node, Axis axis, const Proposal& proposal) {
        const std::optional<double> length = along(axis, proposal);
        const std::optional<double> breadth = along(across(axis), proposal);
        std::vector<Proposal> proposals(node.items.size(), makeProposal(axis, std::nullopt, breadth));
        if (!length) return proposals;

        // Positions among the items: higher priorities first, equal ones in their order.
        const auto priority = [&](std::size_t position) { return nodes_[node.items[position]].priority; };
        std::vector<std::size_t> order(node.items.size());
        std::iota(order.begin(), order.end(), 0U);
        std::ranges::sort(order, {},
                          [&](std::size_t position) { return std::pair(-priority(position), position); });

        const std::vector<double>& gaps = gapsOf(node, axis);
        double available = std::accumulate(gaps.begin(), gaps.end(), *length, std::minus<>());
        std::vector<double> minimums(node.items.size());
        for (const std::size_t position : order) {
            if (priority(position) == priority(order.front())) continue;
            minimums[position] = probe(node.items[position], axis, 0.0, breadth);
            available -= minimums[position];
        }
        for (auto first = order.begin(); first != order.end();) {
            const auto last = std::find_if(first, order.end(), [&](std::size_t position) {
                return priority(position) != priority(*first);
            });
            std::for_each(first, last, [&](std::size_t position) { available += minimums[position]; });
            sortByFlexibility(node, std::span(first, last), axis, breadth);
            for (; first != last; ++first) {
                const double share = std::max(0.0, available / static_cast<double>(last - first));
                proposals[*first] = makeProposal(axis, share, breadth);
                const double taken = along(axis, measure(node.items[*first], proposals[*first]).size);
                if (!std::isinf(available)) available -= taken;
            }
        }
        return proposals;
    }

    /// The least flexible first, so that what they leave goes to the others.
    void sortByFlexibility(const LayoutNode& node, std::span<std::size_t> positions, Axis axis,
                           const std::optional<double>& breadth) {
        if (positions.size() < 2) return;
        std::vector<std::pair<double, std::size_t>> flexibilities;
        flexibilities.reserve(positions.size());
        for (const std::size_t position : positions) {
            const std::size_t item = node.items[position];
            const double longest = probe(item, axis, infinity, breadth);
            const double shortest = probe(item, axis, 0.0, breadth);
            flexibilities.emplace_back(std::isinf(longest) ? infinity : longest - shortest, position);
        }
        // Equally flexible ones keep their order.
        std::ranges::sort(flexibilities);
        std::ranges::transform(flexibilities, positions.begin(), &std::pair<double, std::size_t>::second);
    }

    /// An item's length when offered `length`. Stacks within stacks multiply these questions; a tree that
    /// was made to ask millions of them is laid out without more of them, as if nothing were flexible.
    double probe(std::size_t item, Axis axis, double length, const std::optional<double>& breadth) {
        if (probesLeft_ == 0) return 0.0;
        return along(axis, measure(item, makeProposal(axis, length, breadth)).size);
    }

    Arrangement lineUp(LayoutNode& node, Axis axis, std::vector<Proposal> proposals) {
        const auto guideAcross = [&](const Answer& answered) {
            if (const auto* row = std::get_if<node::HStack>(node.kind))
                return guide(answered, row->alignment);
            const auto* column = std::get_if<node::VStack>(node.kind);
            return guide(answered, column != nullptr ? column->alignment : HorizontalAlignment::center);
        };
        std::vector<Answer> answers;
        answers.reserve(node.items.size());
        AlignedExtent breadth;
        for (std::size_t i = 0; i < node.items.size(); ++i) {
            const Answer& answered = answers.emplace_back(measure(node.items[i], proposals[i]));
            breadth.add(guideAcross(answered), along(across(axis), answered.size));
        }
        Arrangement result;
        result.offsets.reserve(node.items.size());
        const std::vector<double>& gaps = gapsOf(node, axis);
        double position = 0.0;
        for (std::size_t i = 0; i < answers.size(); ++i) {
            const double aside = breadth.before - guideAcross(answers[i]);
            const Point offset = axis == Axis::horizontal ? Point{position, aside} : Point{aside, position};
            result.offsets.push_back(offset);
            takeBaselines(result.answer, answers[i], offset.y);
            position += along(axis, answers[i].size) + (i < gaps.size() ? gaps[i] : 0.0);
        }
        position = std::max(0.0, position);
        result.answer.size =
            axis == Axis::horizontal ? Size{position, breadth.length()} : Size{breadth.length(), position};
        result.proposals = std::move(proposals);
        return result;
    }

    const std::vector<double>& gapsOf(LayoutNode& node, Axis axis) {
        if (node.gaps) return *node.gaps;
        std::vector<double>& gaps = node.gaps.emplace();
        const std::optional<double> spacing = ownSpacing(node);
        for (std::size_t i = 1; i < node.items.size(); ++i) {
            gaps.push_back(spacing ? boundedLength(*spacing)
                                   : gapBetweenItems(node.items[i - 1], node.items[i], axis));
        }
        return gaps;
    }

    static std::optional<double> ownSpacing(const LayoutNode& node) {
        if (const auto* row = std::get_if<node::HStack>(node.kind)) return row->spacing;
        if (const auto* column = std::get_if<node::VStack>(node.kind)) return column->spacing;
        return std::nullopt;
    }

    double gapBetweenItems(std::size_t first, std::size_t second, Axis axis) {
        const NodeSpacing& before = spacingOf(nodes_, first, measurer_);
        const NodeSpacing& after = spacingOf(nodes_, second, measurer_);
        return axis == Axis::horizontal ? gapBetween(before.trailing, after.leading)
                                        : gapBetween(before.bottom, after.top);
    }

    static double finite(double length) { return std::isfinite(length) ? length : 0.0; }

    std::vector<LayoutNode>& nodes_;
    const Size widgetSize_;
    const Measurer& measurer_;
    std::size_t probesLeft_;
};

}  // namespace

std::vector<LayoutNode> layOut(const platform::View& root, const Size& widgetSize, const Measurer& measurer) {
    std::vector<LayoutNode> nodes = makeLayoutNodes(root);
    const Size size{std::max(0.0, boundedLength(widgetSize.width)),
                    std::max(0.0, boundedLength(widgetSize.height))};
    LayoutEngine(nodes, size, measurer).run();
    return nodes;
}

}  // namespace host
