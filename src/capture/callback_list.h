// The application's callbacks of one kind, in the order in which they were added.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <span>

#include "base/status.h"

namespace tavra {

// The handle record owns three. Any thread adds, removes and looks; the capture thread walks the list with
// the mutex held during the calls. The mutex is recursive, so a callback may use the list functions; it must
// not remove itself, because the walk reads the next node after the call.
template <typename Function>
class CallbackList {
  public:
    struct Node {
        Node* next = nullptr;
        std::uint32_t identifier = 0;
        Function function = nullptr;
        void* context = nullptr;
        std::uint32_t word = 0;  // the callback's own
    };

    CallbackList() = default;
    ~CallbackList() { removeAll(); }
    CallbackList(const CallbackList&) = delete;
    CallbackList& operator=(const CallbackList&) = delete;

    // Appends a callback; its identifier is one above the highest in the list, at least 1. 8: out of memory.
    Status add(Function function, void* context, std::uint32_t& identifier);
    // Nothing if the identifier is not in the list.
    void remove(std::uint32_t identifier);
    void removeAll();

    std::uint32_t count() const;
    // The callback at a position from 0; null and 0 past the end.
    void at(std::uint32_t position, Function& function, std::uint32_t& identifier) const;
    // As many entries as both arrays hold; the result is the length of the whole list.
    std::uint32_t list(std::uint32_t capacity, Function* functions, std::uint32_t* identifiers) const;

    bool empty() const { return count() == 0; }

    // Calls `visit(node)` for each callback in order, with the mutex held.
    template <typename Visitor>
    void forEach(Visitor visit) {
        const std::lock_guard lock(mutex_);
        for (Node* node = head_; node != nullptr; node = node->next) visit(*node);
    }
    // The same, and `behind()` after the last, also of an empty list.
    template <typename Visitor, typename Behind>
    void forEach(Visitor visit, Behind behind) {
        const std::lock_guard lock(mutex_);
        forEach(visit);
        behind();
    }

  private:
    mutable std::recursive_mutex mutex_;
    Node* head_ = nullptr;
};

template <typename Function>
Status CallbackList<Function>::add(Function function, void* context, std::uint32_t& identifier) {
    const std::lock_guard lock(mutex_);
    std::uint32_t highest = 0;
    Node** tail = &head_;
    for (; *tail != nullptr; tail = &(*tail)->next) {
        if ((*tail)->identifier > highest) highest = (*tail)->identifier;
    }
    Node* const node = new (std::nothrow) Node{nullptr, highest + 1, function, context, 0};
    if (node == nullptr) return Status(error::kOutOfMemory);
    *tail = node;
    identifier = node->identifier;
    return Status();
}

template <typename Function>
void CallbackList<Function>::remove(std::uint32_t identifier) {
    const std::lock_guard lock(mutex_);
    for (Node** link = &head_; *link != nullptr; link = &(*link)->next) {
        if ((*link)->identifier != identifier) continue;
        const std::unique_ptr<Node> removed(*link);
        *link = removed->next;
        return;
    }
}

template <typename Function>
void CallbackList<Function>::removeAll() {
    const std::lock_guard lock(mutex_);
    while (head_ != nullptr) {
        const std::unique_ptr<Node> removed(head_);
        head_ = removed->next;
    }
}

template <typename Function>
std::uint32_t CallbackList<Function>::count() const {
    const std::lock_guard lock(mutex_);
    std::uint32_t nodes = 0;
    for (const Node* node = head_; node != nullptr; node = node->next) ++nodes;
    return nodes;
}

template <typename Function>
void CallbackList<Function>::at(std::uint32_t position, Function& function, std::uint32_t& identifier) const {
    const std::lock_guard lock(mutex_);
    const Node* node = head_;
    for (; node != nullptr && position > 0; --position) node = node->next;
    function = node != nullptr ? node->function : nullptr;
    identifier = node != nullptr ? node->identifier : 0;
}

template <typename Function>
std::uint32_t CallbackList<Function>::list(std::uint32_t capacity, Function* functions,
                                           std::uint32_t* identifiers) const {
    const std::lock_guard lock(mutex_);
    std::uint32_t nodes = 0;
    for (const Node* node = head_; node != nullptr; node = node->next, ++nodes) {
        if (nodes >= capacity) continue;
        functions[nodes] = node->function;
        identifiers[nodes] = node->identifier;
    }
    return nodes;
}

}  // namespace tavra
