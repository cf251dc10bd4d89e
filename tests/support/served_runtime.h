#pragma once

// A runtime whose hosts are a service of the test's own.

#include "tests/support/loopback_server.h"
#include "tests/support/test_runtime.h"

namespace tests {

struct ServedRuntime {
    /// The service gives `answer` until the test sets others.
    explicit ServedRuntime(const Answer& answer = {.status = 404}, TestRuntimeOptions options = {})
        : runtime((options.apiHost = options.webHost = service.origin(), options)) {
        service.answer(answer);
    }

    LoopbackServer service;
    TestRuntime runtime;
};

}  // namespace tests
