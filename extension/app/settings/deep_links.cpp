#include "extension/app/settings/deep_links.h"

#include "extension/app/settings/build_flags.h"

namespace extension {

std::string moreNewsLink(const platform::Runtime& runtime) {
    return std::string(widgetScheme) + "news/?isArticle=0&url=" + productionWebHost(runtime) +
           "/sports/All-News/news/";
}

}  // namespace extension
