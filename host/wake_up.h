// Wakes up a thread that polls descriptors.
#ifndef KVT_HOST_WAKE_UP_H
#define KVT_HOST_WAKE_UP_H

namespace kvt
{

/// A descriptor that becomes readable when any thread rings.
class WakeUp
{
public:
    WakeUp();
    ~WakeUp();
    WakeUp(const WakeUp &) = delete;
    WakeUp &operator=(const WakeUp &) = delete;

    int descriptor() const { return descriptor_; }

    /// Makes the descriptor readable. Any thread.
    void ring() const;

    /// Makes it unreadable again until the next ring. The polling thread.
    void clear() const;

private:
    int descriptor_;
};

} // namespace kvt

#endif
