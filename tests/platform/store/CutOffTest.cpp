// The files as a power cut leaves them: at every step of every write, also in the middle of it.

#include "platform/store/FaultFixture.h"

using testing::AnyOf;

class CutOffTest : public FaultFixture
{
  protected:
    // Copies of the files at each step of `action`, and one when it has ended.
    int Cut(const std::function<void()>& action)
    {
        int cuts = 0;
        const auto copy = [&] { CopyStore(Path("cut") + std::to_string(cuts++)); };
        faulty::OnWrite(copy);
        action();
        faulty::OnWrite(nullptr);
        copy();
        return cuts;
    }
    std::string DumpOfCut(int cut) { return DumpOf(Path("cut") + std::to_string(cut)); }
};

TEST_F(CutOffTest, EveryStepOfAChangeOpensAsBeforeOrAfterIt)
{
    const std::string before = Dump();
    for (const Operation& operation : kChanges)
    {
        const int cuts = Cut([&] { operation.run(*m_manager); });
        const std::string after = Dump();
        EXPECT_GT(cuts, 3) << operation.name;
        std::string last = before;
        for (int cut = 0; cut < cuts; ++cut)
        {
            const std::string dump = DumpOfCut(cut);
            EXPECT_TRUE(dump == after || dump == last) << operation.name << " at step " << cut;
            last = dump;
        }
        EXPECT_EQ(last, after) << operation.name << " was acknowledged";
        Restore();
    }
}

TEST_F(CutOffTest, EveryStepOfBringingTheLogInKeepsWhatWasAcknowledged)
{
    for (const Operation& operation : kChanges)
        AnalyticsFaultOf([&] { ClientFaultOf([&] { operation.run(*m_manager); }); });
    const std::string before = Dump();
    const int cuts = Cut([&] { m_manager.reset(); });
    EXPECT_GT(cuts, 10);
    for (int cut = 0; cut < cuts; ++cut)
        EXPECT_EQ(DumpOfCut(cut), before) << "at step " << cut;
}

TEST_F(CutOffTest, EveryStepOfTheFirstStartOpensAsANewStore)
{
    m_manager.reset();
    std::filesystem::remove_all(Path("state"));
    const int cuts = Cut([&] { Open(); });
    EXPECT_GT(cuts, 10);
    for (int cut = 0; cut < cuts; ++cut)
        EXPECT_EQ(DumpOfCut(cut), Dump()) << "at step " << cut;
}
