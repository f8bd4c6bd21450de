// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace vela::detail {

/// The gate that statements pass on their way to quill. It is closed while the process forks, because a child
/// must not inherit a queue or lock of quill's that another thread was using, and for good when the registry
/// is destroyed.
class StatementGate {
public:
    /// Lets one statement pass during its lifetime. Waits while the process forks.
    class Pass {
    public:
        Pass() noexcept;
        ~Pass();
        Pass(const Pass&) = delete;
        Pass& operator=(const Pass&) = delete;

        /// False once the gate is closed for good, and for the thread that forks: the statement is dropped.
        bool granted() const noexcept { return granted_; }

    private:
        bool granted_;
    };

    /// Closes the gate and waits until no statement is inside. One thread at a time: `pause` waits for the
    /// `resume` of another thread.
    static void pause() noexcept;
    static void resume() noexcept;
    /// For a forked child, called by the thread that paused.
    static void resumeInChild() noexcept;

    static void closeForGood() noexcept;
    static bool isClosedForGood() noexcept;
};

}  // namespace vela::detail
