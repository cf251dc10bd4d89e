#pragma once

// Widgets as their host sees them: their names, their answers, and how they show an entry.

#include <concepts>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>
#include "platform/view/view.h"
#include "platform/widget/timeline.h"

namespace platform {

/// What a provider of timelines offers. The placeholder comes at once; the other two call their
/// completion exactly once, on any thread, possibly before they return.
template <typename Provider>
concept TimelineProvider = requires(Provider& provider, const TimelineProviderContext& context) {
    { provider.placeholder(context) } -> std::same_as<typename Provider::Entry>;
    { provider.placeholder(context).date } -> std::convertible_to<Instant>;
    provider.getSnapshot(context, std::function<void(typename Provider::Entry)>());
    provider.getTimeline(context, std::function<void(Timeline<typename Provider::Entry>)>());
};

/// An entry; only its widget knows the type.
class AnyTimelineEntry {
public:
    virtual ~AnyTimelineEntry() = default;
    virtual Instant date() const = 0;
    /// The entry's own fields, in their own order.
    virtual nlohmann::ordered_json json() const = 0;
    /// What the widget shows for it. Builds the views on every call, so a fatal error of a view happens here.
    virtual View view(const EnvironmentValues& environment) const = 0;
};

using AnyEntry = std::shared_ptr<const AnyTimelineEntry>;

struct WidgetDescription {
    std::string kind;
    std::string displayName;
    std::string description;
    std::vector<WidgetFamily> families;
    /// From version 17 on the host adds its margins around the content unless this is set.
    bool contentMarginsDisabled = false;
};

/// One widget of a bundle, with its types erased. Any thread.
class WidgetConfiguration {
public:
    virtual ~WidgetConfiguration() = default;
    virtual const WidgetDescription& description() const = 0;
    virtual AnyEntry placeholder(const TimelineProviderContext& context) = 0;
    virtual void getSnapshot(const TimelineProviderContext& context,
                             std::function<void(AnyEntry)> completion) = 0;
    virtual void getTimeline(const TimelineProviderContext& context,
                             std::function<void(Timeline<AnyEntry>)> completion) = 0;
};

/// A widget without settings of its own: a provider and the view of an entry. An `Entry` has a
/// `date` and a free function `nlohmann::ordered_json entryJson(const Entry&)` beside its type.
template <TimelineProvider Provider>
class StaticConfiguration final : public WidgetConfiguration {
public:
    using Entry = typename Provider::Entry;
    using Content = std::function<View(const Entry&, const EnvironmentValues&)>;

    StaticConfiguration(WidgetDescription description, std::unique_ptr<Provider> provider, Content content)
        : description_(std::move(description)),
          provider_(std::move(provider)),
          content_(std::make_shared<const Content>(std::move(content))) {}

    const WidgetDescription& description() const override { return description_; }

    AnyEntry placeholder(const TimelineProviderContext& context) override {
        return erased(provider_->placeholder(context), content_);
    }

    void getSnapshot(const TimelineProviderContext& context,
                     std::function<void(AnyEntry)> completion) override {
        provider_->getSnapshot(context, [content = content_, completion = std::move(completion)](
                                            Entry entry) { completion(erased(std::move(entry), content)); });
    }

    void getTimeline(const TimelineProviderContext& context,
                     std::function<void(Timeline<AnyEntry>)> completion) override {
        provider_->getTimeline(
            context, [content = content_, completion = std::move(completion)](Timeline<Entry> timeline) {
                Timeline<AnyEntry> all{{}, timeline.policy};
                for (Entry& entry : timeline.entries)
                    all.entries.push_back(erased(std::move(entry), content));
                completion(std::move(all));
            });
    }

private:
    struct Erased final : AnyTimelineEntry {
        Erased(Entry ownEntry, std::shared_ptr<const Content> ownContent)
            : entry(std::move(ownEntry)), content(std::move(ownContent)) {}
        Instant date() const override { return entry.date; }
        nlohmann::ordered_json json() const override { return entryJson(entry); }
        View view(const EnvironmentValues& environment) const override {
            return (*content)(entry, environment);
        }

        Entry entry;
        std::shared_ptr<const Content> content;
    };

    static AnyEntry erased(Entry entry, std::shared_ptr<const Content> content) {
        return std::make_shared<const Erased>(std::move(entry), std::move(content));
    }

    WidgetDescription description_;
    std::unique_ptr<Provider> provider_;
    std::shared_ptr<const Content> content_;
};

}  // namespace platform
