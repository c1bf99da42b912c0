// SPDX-License-Identifier: GPL-3.0-or-later
// SPDX-FileCopyrightText: 2026 The Morvane developers
#include "model/address.h"
#include "model/file.h"
#include "model/folder.h"
#include "model/mainlinekey.h"
#include "model/objectref.h"
#include "modeltesthelpers.h"

#include <QTest>

#include <memory>
#include <utility>
#include <vector>

using namespace Morvane;
using namespace Morvane::Testing;

class TestAddress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void shortListReportsMinusOne();
    void listValueRoundTrip_data();
    void listValueRoundTrip();
    void resolvesEveryKind();
    void invalidatedOnDeleteAndReResolved();
    void fileAddressUsesUniqueIds();
    void registrationFollowsCopies();
    void defaultPivotLinkDropsWithItsFile();
    void keyCopiesCarrySubEntityData();
};

void TestAddress::shortListReportsMinusOne()
{
    Address a(nullptr, {3, 4});
    QCOMPARE(a.timelineId(), -1);
    QCOMPARE(a.keyIndex(), -1);
    QCOMPARE(a.refIndex(), -1);
    QCOMPARE(a.at(-1), -1);
    QVERIFY(!a.isValid());
    QCOMPARE(a.key(), nullptr); // no document: nothing to resolve in
    a.set(4, 9);
    QCOMPARE(a.toList(), (QList<int>{3, 4, -1, -1, 9}));
    QVERIFY(a == Address(nullptr, {3, 4, -1, -1, 9}));
    QVERIFY(a != Address(nullptr, {3, 4}));
}

void TestAddress::listValueRoundTrip_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QList<int>>("expected");

    QTest::newRow("list") << QVariant(QVariantList{1, 2, 3}) << QList<int>{1, 2, 3};
    QTest::newRow("empty") << QVariant(QVariantList{}) << QList<int>{};
    QTest::newRow("not numbers") << QVariant(QVariantList{1, QStringLiteral("x")}) << QList<int>{};
    QTest::newRow("not a list") << QVariant(QStringLiteral("abc")) << QList<int>{};
}

void TestAddress::listValueRoundTrip()
{
    QFETCH(QVariant, stored);
    QFETCH(QList<int>, expected);
    const Address a(nullptr, stored);
    QCOMPARE(a.toList(), expected);
    QCOMPARE(Address(nullptr, a.toVariant()).toList(), expected);
}

void TestAddress::resolvesEveryKind()
{
    KeyedDocument f;
    Timeline *leg = f.anim->timeline(1);
    TimelineKey *key = leg->key(1);
    MainlineKey *mk = f.anim->mainlineKey(1);

    QCOMPARE(Address(&f.doc, {0}).entity(), f.entity);
    QCOMPARE(Address(&f.doc, {0, 0}).animation(), f.anim);
    QCOMPARE(Address(&f.doc, {0, 0, 1}).timeline(), leg);
    QCOMPARE(Address(&f.doc, {0, 0, 1}).mainlineKey(), mk);
    QCOMPARE(Address(&f.doc, {0, 0, 1, 1}).key(), key);
    QCOMPARE(Address(&f.doc, {0, 1}).object(), f.entity->object(1));
    QCOMPARE(Address(&f.doc, {0, 0, 1, ObjectRef::ZRefType, 1}).ref(), mk->zRef(1));
    QCOMPARE(Address(&f.doc, {0, 0, 9, 0}).key(), nullptr);
    QCOMPARE(Address(&f.doc, {1}).entity(), nullptr);

    // Each item's own address resolves back to it.
    QCOMPARE(key->address().toList(), (QList<int>{0, 0, 1, 1}));
    QCOMPARE(mk->zRef(1)->address().toList(), (QList<int>{0, 0, 1, 1, 1}));
    QCOMPARE(f.entity->object(1)->address().toList(), (QList<int>{0, 1}));
    QCOMPARE(Address(&f.doc, key->address().toList()).key(), key);

    // A resolved key's address still answers for what contains the key.
    const Address a(&f.doc, {0, 0, 1, 1});
    QCOMPARE(a.key(), key);
    QVERIFY(a.isValid());
    QCOMPARE(a.timeline(), key->parentTimeline());
    QCOMPARE(a.key(), key);
}

void TestAddress::invalidatedOnDeleteAndReResolved()
{
    KeyedDocument f;
    Timeline *arm = f.anim->timeline(0);
    const Address a(&f.doc, {0, 0, 0, 1});
    TimelineKey *old = a.key();
    QVERIFY(old);
    QVERIFY(a.isValid());
    QCOMPARE(old->registeredAddressCount(), 2); // ours and the reference's

    QVERIFY(arm->removeKey(old, true));
    QVERIFY(!a.isValid());

    // Nothing at those indexes now.
    QCOMPARE(a.key(), nullptr);

    // Whatever key stands there later is found again.
    auto *replacement = new TimelineKey;
    replacement->setCachedTime(700);
    arm->appendTimelineKey(replacement);
    QCOMPARE(a.key(), replacement);
    QVERIFY(a.isValid());

    // Deleting a whole animation clears addresses into it.
    const Address animAddress = f.anim->address();
    QVERIFY(animAddress.isValid());
    f.entity->deleteAnimation(0);
    QVERIFY(!animAddress.isValid());
    QVERIFY(!a.isValid());
    QCOMPARE(a.key(), nullptr);
    QCOMPARE(animAddress.animation(), nullptr);
}

void TestAddress::fileAddressUsesUniqueIds()
{
    RigxData doc;
    auto *first = new Folder(QStringLiteral("a"));
    auto *second = new Folder(QStringLiteral("b"));
    doc.appendFolder(first);
    doc.appendFolder(second);
    auto *file = new File(QStringLiteral("b/x.png"));
    second->appendFile(file);

    const Address a = file->address();
    QCOMPARE(a.folderId(), second->id());
    QCOMPARE(a.fileId(), file->id());
    QCOMPARE(a.file(), file);

    // Ids, not positions: removing the first folder keeps the address right.
    doc.deleteFolder(0);
    const Address byIds(&doc, {second->id(), file->id()});
    QCOMPARE(byIds.file(), file);
    QCOMPARE(Address(&doc, {second->id()}).folder(), second);
    QCOMPARE(byIds.folder(), second); // the file's folder

    second->deleteFile(0);
    QVERIFY(!a.isValid());
    QCOMPARE(a.file(), nullptr);
}

// Every copy registers with the item, and unregisters when invalidated or gone; registration
// stays cheap both ways for a file shown by many keys.
void TestAddress::registrationFollowsCopies()
{
    KeyedDocument f;
    TimelineKey *key = f.anim->timeline(0)->key(0);
    const int base = key->registeredAddressCount();
    {
        Address a = key->address();
        Address b = a;
        Address c;
        c = b;
        QCOMPARE(key->registeredAddressCount(), base + 3);
        c.invalidate();
        QCOMPARE(key->registeredAddressCount(), base + 2);
        QCOMPARE(c.key(), key); // its indexes still resolve
    }
    QCOMPARE(key->registeredAddressCount(), base);

    auto *folder = new Folder;
    f.doc.appendFolder(folder);
    auto *file = new File(QStringLiteral("x.png"));
    folder->appendFile(file);
    std::vector<Address> addresses(20000, file->address());
    QCOMPARE(file->registeredAddressCount(), 20000);
    for (size_t i = 0; i < addresses.size(); i += 2)
        addresses[i].invalidate();
    QCOMPARE(file->registeredAddressCount(), 10000);
    folder->deleteFile(0);
    for (const Address &a : addresses)
        QVERIFY(!a.isValid());
}

void TestAddress::defaultPivotLinkDropsWithItsFile()
{
    RigxData doc;
    auto *folder = new Folder;
    doc.appendFolder(folder);
    auto *file = new File(QStringLiteral("x.png"), 0.25, 0.75);
    folder->appendFile(file);
    DisplayInfo info;
    info.setPivotX(0.5);
    info.setPivotY(0.5);
    info.setDefaultPivot(true, file->address());
    const DisplayInfo copy = info;
    QCOMPARE(copy.fileLink().file(), file);
    QCOMPARE(copy.pivotX(), 0.25);
    QCOMPARE(file->registeredAddressCount(), 2); // info and copy
    folder->deleteFile(0);
    // The link reads null, and the info falls back to its own pivot.
    QVERIFY(info.fileLink().isEmpty());
    QVERIFY(copy.fileLink().file() == nullptr);
    QCOMPARE(copy.pivotX(), 0.5);
    QCOMPARE(copy.pivotY(), 0.5);
}

void TestAddress::keyCopiesCarrySubEntityData()
{
    TimelineKey plain;
    QVERIFY(!plain.hasEntityOrSoundInfo());
    QCOMPARE(std::as_const(plain).entityInfo().speedRatio, 1.0); // read, not made
    QVERIFY(!plain.hasEntityOrSoundInfo());

    TimelineKey sub;
    sub.entityInfo().timeRatio = 0.25;
    sub.soundInfo().volume = 0.5;
    TimelineKey copy(sub);
    QCOMPARE(copy.entityInfo().timeRatio, 0.25);
    QCOMPARE(copy.soundInfo().volume, 0.5);
    copy.entityInfo().timeRatio = 0.75; // a copy owns its data
    QCOMPARE(sub.entityInfo().timeRatio, 0.25);
    sub = plain;
    QVERIFY(!sub.hasEntityOrSoundInfo());
    QCOMPARE(sub.entityInfo().timeRatio, 0.0);
}

QTEST_GUILESS_MAIN(TestAddress)
#include "tst_address.moc"
