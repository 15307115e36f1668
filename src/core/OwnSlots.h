#pragma once

/// The object as a host sees it: a call goes through its slots, also where somebody has replaced one of them.
/// `Interface` is the host's class. The implementation classes are final, so that a compiler which knows the object
/// would call their functions directly; a volatile pointer tells it nothing.
template <class Interface>
Interface& ThroughSlots(Interface& object) noexcept {
    Interface* volatile unknown = &object;
    return *unknown;
}
