// The instances of one part: what is handed over, what plays, what retires.
#pragma once

#include <cstdint>
#include <memory>

#include "base/published.h"
#include "voice/part_engine.h"

namespace stratovane {

/// One instance on its way: appended by the UI thread, played and retired by the audio thread,
/// deleted by the UI thread again.
struct ChainNode {
    std::unique_ptr<PartEngine> instance;  // set before the node's successor is published
    bool forMessage = false;               // a MIDI message asked for it
    Published<ChainNode> next;             // in the hand-over list, later in the dead list
    ChainNode* older = nullptr;            // in the playing chain. Audio thread
    std::uint32_t keptUntil = 0;           // number of a block; set before it joins the dead list
};

/// Instances that no longer sound, waiting to be deleted.
/// Threads: `append` is the audio thread's, the rest the UI thread's.
class DeadList {
  public:
    DeadList() : head_{new ChainNode}, tail_{head_} {}
    ~DeadList();
    DeadList(const DeadList&) = delete;
    DeadList& operator=(const DeadList&) = delete;

    /// To be kept until a block has passed.
    void append(ChainNode* node, std::uint32_t block) {
        node->keptUntil = block;
        node->next.publish(nullptr);
        tail_->next.publish(node);
        tail_ = node;
    }
    /// Deletes the oldest instance, if its block has passed after so many; answers whether. The
    /// count may wrap.
    bool deleteOldest(std::uint32_t blocks);

  private:
    ChainNode* head_;  // UI thread; a node whose instance is gone already, or the oldest
    ChainNode* tail_;  // audio thread
};

/// Threads: `append`, `current` and destruction are the UI thread's, the rest the audio thread's.
class PlayingChain {
  public:
    explicit PlayingChain(std::unique_ptr<PartEngine> first);
    ~PlayingChain();
    PlayingChain(const PlayingChain&) = delete;
    PlayingChain& operator=(const PlayingChain&) = delete;

    /// Makes an instance the part's current one and hands it to the audio thread. UI thread.
    void append(std::unique_ptr<PartEngine> instance, bool forMessage = false);
    /// The instance appended last, played already or not; what is set goes there. Any thread.
    PartEngine& current() const { return *current_.read(); }

    /// Takes over one waiting instance; null when there was none. Audio thread.
    ChainNode* adopt();
    /// The playing instance; those behind it retire. Audio thread.
    ChainNode* head() const { return head_; }
    /// Unlinks the last node when it may go (`mayGo`), at most one a call. Audio thread.
    template <class MayGo>
    void retireLast(DeadList& dead, std::uint32_t keptUntil, MayGo mayGo) {
        ChainNode* before = head_;
        if (before->older == nullptr) return;
        while (before->older->older != nullptr) before = before->older;
        ChainNode* last = before->older;
        const bool first = before == head_;
        if (!mayGo(*last->instance, first)) return;
        before->older = nullptr;
        dead.append(last, keptUntil);
    }

    /// Every instance there is, waiting ones included. Nothing may render meanwhile.
    template <class Visit>
    void forEach(Visit visit) {
        for (ChainNode* node = head_; node != nullptr; node = node->older) visit(*node->instance);
        for (ChainNode* node = handOver_; node != nullptr; node = node->next.read())
            if (node->instance) visit(*node->instance);
    }

  private:
    Published<PartEngine> current_;
    ChainNode* head_;      // audio thread
    ChainNode* handOver_;  // audio thread: the node that is filled next
    ChainNode* tail_;      // UI thread: the empty node that the next instance goes into
};

}  // namespace stratovane
