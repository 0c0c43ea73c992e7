#include <common/state/Cache.h>
#include <common/state/Transaction.h>
#include <tests/common/state/StateRepository.h>
#include <tests/support/RecordingIo.h>

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace {

using common::Cache;
using common::FileChange;
using common::State;
using common::Transaction;

static_assert(std::is_convertible_v<Cache&, Transaction>);

const std::string oddlySpaced = R"( {"head":{"reference":"roof"}} )";
const std::string rewritten = "{\n    \"head\" : {\n        \"reference\" : \"roof\"\n    }\n}";

class TransactionTest : public testing::Test {
protected:
    TransactionTest() {
        repository.writeStateFile(oddlySpaced);
        cache = Cache::get(repository.root(), io).value();
    }

    OdString reference() const { return cache->read().head.reference; }
    void rename(const wchar_t* to) { cache->write().head.reference = to; }

    qrv_test::StateRepository repository;
    qrv_test::RecordingIo io;
    std::shared_ptr<Cache> cache;
};

TEST_F(TransactionTest, PutsTheWholeStateBackUnlessCommitted) {
    cache->write() = qrv_test::fullState();
    {
        const Transaction transaction(*cache);
        cache->write() = State();
    }
    EXPECT_EQ(cache->read(), qrv_test::fullState());
}

TEST_F(TransactionTest, KeepsTheChangesWhenCommitted) {
    {
        Transaction transaction(*cache);
        rename(L"changed");
        transaction.commit();
        EXPECT_EQ(reference(), L"changed");
    }
    EXPECT_EQ(reference(), L"changed");
    cache.reset();
    EXPECT_EQ(qrv_test::load(repository).head.reference, L"changed");
}

TEST_F(TransactionTest, KeepsAlsoTheChangesAfterTheCommit) {
    {
        Transaction transaction(*cache);
        transaction.commit();
        rename(L"changed");
        transaction.commit();
    }
    EXPECT_EQ(reference(), L"changed");
}

TEST_F(TransactionTest, IsTheSameFromTheCache) {
    {
        const Transaction transaction = cache->getTransaction();
        rename(L"undone");
    }
    EXPECT_EQ(reference(), L"roof");
    {
        Transaction transaction = cache->getTransaction();
        rename(L"kept");
        transaction.commit();
    }
    EXPECT_EQ(reference(), L"kept");
}

TEST_F(TransactionTest, ThatIsRolledBackMakesTheCacheRewriteItsFile) {
    { const Transaction transaction(*cache); }
    cache.reset();
    EXPECT_EQ(repository.stateFileBytes(), rewritten);
    EXPECT_EQ(io.results.size(), 1u);
}

TEST_F(TransactionTest, ThatIsRolledBackAfterChangesWritesTheRestoredState) {
    {
        const Transaction transaction(*cache);
        rename(L"undone");
    }
    cache.reset();
    EXPECT_EQ(repository.stateFileBytes(), rewritten);
}

TEST_F(TransactionTest, ThatIsCommittedDoesNotItselfMakeTheCacheRewriteItsFile) {
    {
        Transaction transaction(*cache);
        transaction.commit();
    }
    cache.reset();
    EXPECT_EQ(repository.stateFileBytes(), oddlySpaced);
    EXPECT_TRUE(io.results.empty());
}

TEST_F(TransactionTest, IsRolledBackByAnException) {
    try {
        Transaction transaction(*cache);
        rename(L"undone");
        throw std::runtime_error("on the way");
        transaction.commit();
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(reference(), L"roof");
}

TEST_F(TransactionTest, InAnotherIsUndoneAlone) {
    Transaction outer(*cache);
    rename(L"outer");
    {
        const Transaction inner(*cache);
        rename(L"inner");
    }
    EXPECT_EQ(reference(), L"outer");
    outer.commit();
}

TEST_F(TransactionTest, UndoesACommittedOneInsideIt) {
    {
        const Transaction outer(*cache);
        Transaction inner(*cache);
        rename(L"inner");
        inner.commit();
    }
    EXPECT_EQ(reference(), L"roof");
}

TEST_F(TransactionTest, IsAGuardOfItsOwnAsACopy) {
    {
        Transaction transaction(*cache);
        rename(L"undone");
        {
            const Transaction copy(transaction);
            transaction.commit();
            rename(L"undone too");
        }
        EXPECT_EQ(reference(), L"roof");
    }
    EXPECT_EQ(reference(), L"roof");
    {
        std::optional<Transaction> transaction(*cache);
        transaction->commit();
        const Transaction copy(*transaction);
        rename(L"kept");
    }
    EXPECT_EQ(reference(), L"kept");
}

TEST_F(TransactionTest, GivesBackTheDrawingsOfAbandonedChanges) {
    class Drawing : public OdRxObject {};
    auto* drawing = new Drawing;
    {
        const Transaction transaction(*cache);
        common::ConflictData conflict(L"p", L"u", FileChange::added, FileChange::added);
        conflict.handles.localDrawing = OdRxObjectPtr(drawing);
        cache->write().conflicts.push_back(conflict);
        EXPECT_EQ(drawing->numRefs(), 3);
    }
    EXPECT_EQ(drawing->numRefs(), 1);
    EXPECT_TRUE(cache->read().conflicts.empty());
    drawing->release();
}

TEST_F(TransactionTest, CanUndoWithoutThrowing) {
    EXPECT_TRUE(std::is_nothrow_swappable_v<State>);
    EXPECT_TRUE(std::is_nothrow_destructible_v<Transaction>);
    EXPECT_TRUE(std::is_copy_constructible_v<Transaction>);
}

}  // namespace
