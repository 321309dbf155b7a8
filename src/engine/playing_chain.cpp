#include "engine/playing_chain.h"

#include <utility>

namespace stratovane {

DeadList::~DeadList() {
    while (head_ != nullptr) {
        ChainNode* next = head_->next.read();
        delete head_;
        head_ = next;
    }
}

bool DeadList::deleteOldest(std::uint32_t blocks) {
    ChainNode* oldest = head_->instance ? head_ : head_->next.read();
    if (oldest == nullptr || static_cast<std::int32_t>(blocks - oldest->keptUntil) <= 0)
        return false;
    // The last node stays, emptied: the audio thread may be about to append to it.
    if (oldest != head_) delete std::exchange(head_, oldest);
    oldest->instance.reset();
    return true;
}

PlayingChain::PlayingChain(std::unique_ptr<PartEngine> first)
    : current_{first.get()}, head_{new ChainNode}, handOver_{new ChainNode}, tail_{handOver_} {
    head_->instance = std::move(first);
}

PlayingChain::~PlayingChain() {
    while (head_ != nullptr) {
        ChainNode* older = head_->older;
        delete head_;
        head_ = older;
    }
    while (handOver_ != nullptr) {
        ChainNode* next = handOver_->next.read();
        delete handOver_;
        handOver_ = next;
    }
}

void PlayingChain::append(std::unique_ptr<PartEngine> instance, bool forMessage) {
    auto* fresh = new ChainNode;
    PartEngine* added = instance.get();
    tail_->instance = std::move(instance);
    tail_->forMessage = forMessage;
    ChainNode* filled = tail_;
    tail_ = fresh;
    current_.publish(added);
    filled->next.publish(fresh);
}

ChainNode* PlayingChain::adopt() {
    ChainNode* successor = handOver_->next.read();
    if (successor == nullptr) return nullptr;
    ChainNode* filled = handOver_;
    handOver_ = successor;
    filled->older = head_;
    head_ = filled;
    return filled;
}

}  // namespace stratovane
