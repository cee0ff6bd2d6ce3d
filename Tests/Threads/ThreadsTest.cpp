#include "Threads/pool.h"
#include "Threads/poolEnd.h"
#include "Threads/post.h"

#include <QSemaphore>
#include <QThread>
#include <QtTest>
#include <atomic>
#include <memory>
#include <thread>
#include <vector>

using namespace corv;

class ThreadsTest : public QObject
{
    Q_OBJECT

private slots:
    void aPostRunsOnTheThreadOfItsTarget();
    void postsKeepTheirOrder();
    void aPostFromAThreadWithoutAnEventLoopArrives();
    void aPostToADeadTargetIsDroppedWithWhatItHolds();
    void whatAJobHoldsDiesOnTheThreadOfItsTarget();
    void aTaskRunsToItsEnd();
    void anEmptyTaskIsNotRunning();
    void poolWithAJobThatRunsIsNotDone();
    void jobWithAReplacedThreadIsNotWaitedFor();
    void manyHandOversArriveWhole();
};

void ThreadsTest::aPostRunsOnTheThreadOfItsTarget()
{
    QThread thread;
    QObject target;
    target.moveToThread(&thread);
    thread.start();
    std::atomic<QThread*> ranOn{nullptr};
    post(&target, [&ranOn] { ranOn = QThread::currentThread(); });
    QTRY_COMPARE(ranOn.load(), &thread);
    thread.quit();
    thread.wait();
}

void ThreadsTest::postsKeepTheirOrder()
{
    std::vector<int> order;
    QObject target;
    for (int i = 0; i < 100; ++i)
        post(&target, [&order, i] { order.push_back(i); });
    QVERIFY(order.empty());
    QTRY_COMPARE(order.size(), size_t(100));
    for (size_t i = 0; i < order.size(); ++i)
        QCOMPARE(order[i], static_cast<int>(i));
}

void ThreadsTest::aPostFromAThreadWithoutAnEventLoopArrives()
{
    QObject target;
    int arrived = 0;
    std::thread sender([&target, &arrived] {
        post(&target, [&arrived] { ++arrived; });
        post(&target, [&arrived] { ++arrived; });
    });
    sender.join();
    QTRY_COMPARE(arrived, 2);
}

void ThreadsTest::aPostToADeadTargetIsDroppedWithWhatItHolds()
{
    const auto held = std::make_shared<int>(7);
    bool ran = false;
    {
        QObject target;
        post(&target, [held, &ran] { ran = true; });
        QCOMPARE(held.use_count(), 2L);
    }
    QCOMPARE(held.use_count(), 1L);
    QCoreApplication::processEvents();
    QVERIFY(!ran);
}

void ThreadsTest::whatAJobHoldsDiesOnTheThreadOfItsTarget()
{
    QThread thread;
    QObject target;
    target.moveToThread(&thread);
    thread.start();
    std::atomic<int> diedThere{0};
    std::atomic<int> diedElsewhere{0};
    const int posts = 2000;
    for (int i = 0; i < posts; ++i) {
        std::shared_ptr<int> held(new int(i), [&](int* value) {
            (QThread::currentThread() == &thread ? diedThere : diedElsewhere)++;
            delete value;
        });
        post(&target, [held = std::move(held)] { Q_UNUSED(held) });
    }
    QTRY_COMPARE(diedThere + diedElsewhere, posts);
    QCOMPARE(diedElsewhere.load(), 0);
    thread.quit();
    thread.wait();
}

void ThreadsTest::aTaskRunsToItsEnd()
{
    std::vector<int> result;
    PoolTask task = runOnPool([&result] { result.assign(1000, 3); });
    task.waitForDone();
    QVERIFY(!task.isRunning());
    QCOMPARE(result.size(), size_t(1000));
    task.waitForDone(); // a second wait returns as well
}

void ThreadsTest::anEmptyTaskIsNotRunning()
{
    const PoolTask task;
    QVERIFY(!task.isRunning());
    task.waitForDone();
}

void ThreadsTest::poolWithAJobThatRunsIsNotDone()
{
    QVERIFY(isPoolDoneWithin(-1));
    QSemaphore answer;
    const PoolTask task = runOnPool([&answer] { answer.acquire(); });
    QVERIFY(!isPoolDoneWithin(1));
    answer.release();
    QVERIFY(isPoolDoneWithin(-1));
    QVERIFY(!task.isRunning());
}

void ThreadsTest::jobWithAReplacedThreadIsNotWaitedFor()
{
    QSemaphore answer;
    const PoolTask hung = runOnPool([&answer] { answer.acquire(); });
    hung.replaceThread();
    QVERIFY(!isPoolDoneWithin(-1));
    QVERIFY(hung.isRunning());
    answer.release();
    hung.waitForDone(); // until then its thread is not waited for
    QVERIFY(isPoolDoneWithin(-1));
}

void ThreadsTest::manyHandOversArriveWhole()
{
    QObject target;
    int sum = 0;
    std::vector<PoolTask> tasks;
    for (int i = 0; i < 200; ++i) {
        tasks.push_back(runOnPool([&target, &sum, i] {
            auto values = std::make_shared<std::vector<int>>(100, i);
            post(&target, [values, &sum] {
                for (const int value : *values)
                    sum += value;
            });
        }));
    }
    for (const PoolTask& task : tasks)
        task.waitForDone();
    QTRY_COMPARE(sum, 100 * 199 * 200 / 2);
}

QTEST_GUILESS_MAIN(ThreadsTest)
#include "ThreadsTest.moc"
