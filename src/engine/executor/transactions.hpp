#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/catalog/counters.hpp"
#include "engine/catalog/schema_catalogue.hpp"
#include "engine/sqlite/file_connection.hpp"
#include "engine/sqlite/sqlite.hpp"

namespace kap::engine {

// The transactions of a connection, as the dialect counts them: BEGIN TRAN may be nested, an inner
// COMMIT only counts down, and ROLLBACK ends them all.
//
// Every writing transaction takes the file's write lock at its start, so that it cannot fail later
// because another one was faster.
//
// Whether a transaction is open is known from the database alone: SQLite may have begun one and
// answer an error, and it ends one by itself when a write cannot be undone otherwise (a full disk,
// an interrupted write). What is kept here says only whose it is.
class Transactions {
public:
    Transactions(FileConnection& connection, Counters& counters, SchemaCatalogue& catalogue);
    Transactions(const Transactions&) = delete;
    Transactions& operator=(const Transactions&) = delete;
    // A transaction that is still open is rolled back.
    ~Transactions();

    // 0 also when SQLite has ended the transaction by itself.
    [[nodiscard]] int depth() const noexcept { return database_.inTransaction() ? depth_ : 0; }
    // Whether a transaction is open just where somebody owns one. Without memory even a rollback
    // may fail; the next scope makes up for it.
    [[nodiscard]] bool isSettled() const noexcept {
        return database_.inTransaction() == (depth_ > 0 || scoped_);
    }
    void begin();
    // Raise ServerError 3902 and 3903 when there is none.
    void commit();
    void rollback();
    // Whether a failure (a full disk) has ended the transaction that was begun last, which the
    // client does not know until it ends it, too. True once.
    [[nodiscard]] bool takeLost();

    // Called whenever a transaction has ended, one way or the other.
    void whenEnded(std::function<void()> ended) { ended_ = std::move(ended); }

    // SAVE TRANSACTION: a place within the open transaction to go back to. Error 628 without one.
    void save(const std::string& name);
    [[nodiscard]] bool hasSavePoint(const std::string& name) const;
    void rollbackTo(const std::string& name);

    // Whether what is written within an open transaction is undone by a savepoint, or is one row,
    // of which SQLite writes all or nothing by itself.
    enum class Writes : std::uint8_t { Several, OneRow };

    // Keeps all of what is written in its scope or nothing, in a transaction of its own or within
    // the one that is open: keep() at the end, else it is undone.
    class WriteScope {
    public:
        explicit WriteScope(Transactions& transactions, Writes writes = Writes::Several);
        WriteScope(const WriteScope&) = delete;
        WriteScope& operator=(const WriteScope&) = delete;
        ~WriteScope();
        // It is more than one row after all. To be called before anything is written.
        void expectSeveral();
        void keep();

    private:
        Transactions& transactions_;
        bool own_;
        bool protected_ = false;
        bool ended_ = false;
    };

    // In its scope SQLite is in the middle of a statement, which has called a function of the
    // dialect: the function's statements write tables of its own alone, and are undone with the
    // statement. SQLite opens and ends neither transactions nor savepoints meanwhile.
    class CallScope {
    public:
        explicit CallScope(Transactions& transactions) : transactions_(transactions) {
            ++transactions_.calls_;
        }
        CallScope(const CallScope&) = delete;
        CallScope& operator=(const CallScope&) = delete;
        ~CallScope() { --transactions_.calls_; }

    private:
        Transactions& transactions_;
    };

    // In its scope everything is read from one state of the database, the schema included.
    class ReadScope {
    public:
        explicit ReadScope(Transactions& transactions);
        ReadScope(const ReadScope&) = delete;
        ReadScope& operator=(const ReadScope&) = delete;
        ~ReadScope();

    private:
        Transactions& transactions_;
        bool own_;
    };

    // While the triggers of a statement run there is a transaction in which they see themselves.
    class ImplicitScope {
    public:
        explicit ImplicitScope(Transactions& transactions);
        ImplicitScope(const ImplicitScope&) = delete;
        ImplicitScope& operator=(const ImplicitScope&) = delete;
        ~ImplicitScope();

    private:
        Transactions& transactions_;
        bool own_;
    };

private:
    enum class Access : std::uint8_t { Read, Write };

    // Whether there is a transaction that a scope is to work in. Afterwards what the database says
    // and what is kept here agree: a transaction that nobody owns any more is undone, and one that
    // SQLite has ended is forgotten. Error 3971 when it was that of a scope around this one.
    [[nodiscard]] bool joinsOpen();
    // Begins one that belongs to a scope, or nothing is begun.
    void open(Access access);
    void learnFile(Access access);
    void close();
    void discard() noexcept;
    void undoAll() noexcept;
    void forget() noexcept;
    void undoStatement() noexcept;
    void rollBackKeepingCounters() noexcept;

    FileConnection& connection_;
    Database& database_;
    LockWait& lockWait_;
    Counters& counters_;
    SchemaCatalogue& catalogue_;
    PreparedStatement beginImmediate_;
    PreparedStatement commit_;
    PreparedStatement beginDeferred_;
    PreparedStatement protect_;
    PreparedStatement release_;
    PreparedStatement rollback_;
    PreparedStatement undo_;
    int calls_ = 0;  // that are running
    int depth_ = 0;
    bool implicit_ = false;  // `depth_` is that of an ImplicitScope
    bool lost_ = false;      // SQLite has ended the transaction that begin() began
    bool scoped_ = false;    // a WriteScope or ReadScope has begun the transaction and will end it
    std::vector<std::string> savePoints_;
    std::uint64_t startGeneration_ = 0;
    std::optional<unsigned> ownVersion_;  // of the file's content, at the last commit
    std::function<void()> ended_ = [] {};
};

}  // namespace kap::engine
