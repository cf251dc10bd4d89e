#include "platform/view/view.h"

namespace platform {

struct View::Node {
    NodeKind kind;
    std::vector<View> children;
};

View::View() {
    static const std::shared_ptr<const Node> empty = std::make_shared<const Node>();
    node_ = empty;
}

View::View(NodeKind kind, std::vector<View> children)
    : node_(std::make_shared<const Node>(std::move(kind), std::move(children))) {}

const NodeKind& View::kind() const { return node_->kind; }
const std::vector<View>& View::children() const { return node_->children; }

bool View::operator==(const View& other) const {
    return node_ == other.node_ || (kind() == other.kind() && children() == other.children());
}

View View::padding(EdgeInsets insets) const { return View(node::Padding{insets}, {*this}); }
View View::padding(double allEdges) const { return padding({allEdges, allEdges, allEdges, allEdges}); }

View View::frame(node::Frame frame) const { return View(frame, {*this}); }

View View::overlay(const View& layer, Alignment alignment) const {
    return View(node::Overlay{alignment}, {*this, layer});
}
View View::background(const View& layer, Alignment alignment) const {
    return View(node::Background{alignment}, {*this, layer});
}
View View::containerBackground(const View& layer, Alignment alignment) const {
    return View(node::ContainerBackground{alignment}, {*this, layer});
}
View View::foregroundColor(const Color& color) const { return View(node::ForegroundColor{color}, {*this}); }
View View::opacity(double value) const { return View(node::Opacity{value}, {*this}); }
View View::layoutPriority(double value) const { return View(node::LayoutPriority{value}, {*this}); }
View View::aspectRatio(std::optional<double> ratio, ContentMode contentMode) const {
    return View(node::AspectRatio{ratio, contentMode}, {*this});
}
View View::clipShape(double cornerRadius, RoundedCornerStyle style) const {
    return View(node::ClipShape{cornerRadius, style}, {*this});
}
View View::clipped() const { return View(node::Clipped{}, {*this}); }
View View::clippedAtChildEdge() const { return View(node::Clipped{.atChildEdge = true}, {*this}); }
View View::ignoresSafeArea() const { return View(node::IgnoresSafeArea{}, {*this}); }
View View::fixedSize(bool horizontal, bool vertical) const {
    return View(node::FixedSize{horizontal, vertical}, {*this});
}
View View::widgetURL(std::string url) const { return View(node::WidgetURL{std::move(url)}, {*this}); }

View VStack(StackOptions options, std::vector<View> children) {
    return View(node::VStack{options.alignment, options.spacing}, std::move(children));
}
View HStack(RowOptions options, std::vector<View> children) {
    return View(node::HStack{options.alignment, options.spacing}, std::move(children));
}
View ZStack(Alignment alignment, std::vector<View> children) {
    return View(node::ZStack{alignment}, std::move(children));
}
View Group(std::vector<View> children) { return View(node::Group{}, std::move(children)); }

Text::Text(std::string text, Font font) {
    runs_.push_back({.text = std::move(text), .font = std::move(font), .color = {}, .image = {}});
}

Text Text::image(std::string name) {
    Text text;
    text.runs_.push_back({.text = {}, .font = {}, .color = {}, .image = std::move(name)});
    return text;
}

Text Text::foregroundColor(const Color& color) const {
    Text colored = *this;
    for (TextRun& run : colored.runs_) {
        if (!run.color && !run.image) run.color = color;
    }
    return colored;
}

Text Text::lineLimit(int lines) const {
    Text limited = *this;
    limited.lineLimit_ = lines;
    return limited;
}

Text Text::multilineTextAlignment(HorizontalAlignment alignment) const {
    Text aligned = *this;
    aligned.alignment_ = alignment;
    return aligned;
}

Text operator+(const Text& first, const Text& second) {
    Text joined = first;
    joined.runs_.insert(joined.runs_.end(), second.runs_.begin(), second.runs_.end());
    return joined;
}

View Text::body() const { return View(node::Text{runs_, lineLimit_, alignment_}); }

View Image(std::string assetName, ImageOptions options) {
    return View(node::Image{.name = std::move(assetName), .bytes = {}, .isResizable = options.isResizable});
}
View Image(Bytes bytes, std::string fallbackAssetName, ImageOptions options) {
    return View(node::Image{
        .name = std::move(fallbackAssetName), .bytes = std::move(bytes), .isResizable = options.isResizable});
}
View ColorFill(const Color& color) { return View(node::ColorFill{color}); }
View RoundedRectangle(node::RoundedRectangle shape) { return View(shape); }
View Divider() { return View(node::Divider{}); }
View Spacer(std::optional<double> minLength) { return View(node::Spacer{minLength}); }
View Link(std::string url, const View& label) { return View(node::Link{std::move(url)}, {label}); }

}  // namespace platform
