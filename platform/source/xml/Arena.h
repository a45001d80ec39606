#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace analytics::xml
{

// The memory of one document: it is taken in large pieces and ends as a whole, with no walk over the nodes.
// Used by one thread at a time, as its document is.
class Arena
{
  public:
    // `bytes` is what will probably be needed.
    explicit Arena(std::size_t bytes) : m_next(bytes) {}
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    // While one lives, what libxml2 allocates on this thread comes from the arena. Whatever changes or frees
    // nodes of its document has to happen under one; they may be nested.
    class Use
    {
      public:
        explicit Use(Arena& arena);
        ~Use();
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;

      private:
        Arena* m_before;
    };
    static Arena* InUse(); // null if none is

    void* Take(std::size_t size); // null if there is no memory
    // Whether the block is one of the arena's. The newest is taken back at once, others at the end.
    bool GiveBack(void* block);
    // As many of its first bytes in a place that has room for `size`. Null if there is no memory.
    void* Resize(void* block, std::size_t size);
    bool Owns(const void* block) const { return RestOf(block) != 0; }
    // Bytes from the block to the end of the piece it stands in, 0 for a block of somebody else.
    std::size_t RestOf(const void* block) const;

    // Nodes of the other arena come to stay in the document of this one: keeps their memory.
    void Share(const Arena& other);

    // libxml2 was helped out from somewhere else, which wants back what it lent, node by node.
    void NoteLoan() { m_lent = true; }
    bool Lent() const { return m_lent; }

  private:
    struct Piece
    {
        std::shared_ptr<char[]> bytes;
        std::size_t size;
    };

    bool Extend(std::size_t size); // false if there is no memory

    std::vector<Piece> m_pieces; // its own and those that it shares, in the order in which they came
    std::size_t m_next;          // size of the next piece at least
    char* m_free = nullptr;      // in the newest of its own
    std::size_t m_left = 0;
    char* m_newest = nullptr; // block
    bool m_lent = false;
};

} // namespace analytics::xml
