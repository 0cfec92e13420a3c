#ifndef MO_OWN_MEMORY_H
#define MO_OWN_MEMORY_H

/// Accounts for memory that an object of the library builds when it is first needed, and keeps: whoever happened to
/// need it first has not leaked it, so KLTUtMemory leaves it out.
///
///     MoOwnMemory m_ownMemory; // before the members that hold the memory, so that it outlives them
///     ...
///     MoOwnMemory::Scope const scope(m_ownMemory);
///     m_tables = buildTables();
///
/// What other threads allocate during such a scope is left out with it.
class MoOwnMemory {
public:
    MoOwnMemory() = default;
    ~MoOwnMemory();
    MoOwnMemory(MoOwnMemory const&) = delete;
    MoOwnMemory& operator=(MoOwnMemory const&) = delete;

    /// Adds by how much the heap grows during the scope, or takes off by how much it shrinks.
    class Scope {
    public:
        explicit Scope(MoOwnMemory& owner);
        ~Scope();
        Scope(Scope const&) = delete;
        Scope& operator=(Scope const&) = delete;

    private:
        MoOwnMemory& m_owner;
        unsigned long const m_before;
    };

    /// The bytes of all living objects of this class. May be called from any thread.
    static long total();

private:
    long m_bytes = 0;
};

#endif
