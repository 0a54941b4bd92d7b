#include "kit/SysComboBox.h"
#include "kit/SysFileDialog.h"
#include "kit/SysLineEdit.h"
#include "kit/SysNumberEdit.h"
#include "kit/SysTable.h"
#include "pages/BlendWindow.h"
#include "support/MainWindowTest.h"
#include "support/QtPrinters.h"
#include "support/TestFiles.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

namespace {

// The real main window's blend page, with the file dialogs answered by the test.
class BlendPage : public PageTest<BlendWindow> {
protected:
    void SetUp() override {
        PageTest::SetUp();
        SysFileDialog::setAnswer(
            [this](SysFileDialog::Kind, const QString&, const QString& dir, const QString& filter) {
                asked << filter + "|" + dir;
                return answer;
            });
    }
    void TearDown() override {
        SysFileDialog::setAnswer({});
        PageTest::TearDown();
    }

    // Chooses item `index` of an action box and gives the lines it wrote.
    QStringList choose(SysComboBox* box, int index) {
        return during([&] { emit box->activated(index); });
    }
    void put(int row, const QString& name, const QString& value, const QString& desc = {}) {
        BlendWindow::Row& r = page->row(row);
        r.name->setText(name);
        r.value->setText(value);
        r.desc->setText(desc);
    }
    QList<NvItem> image(const QString& path, int* type = nullptr) {
        QList<NvItem> items;
        int t = -1;
        EXPECT_TRUE(page->utils.loadNvFile(path, items, t)) << path.toStdString();
        if (type)
            *type = t;
        return items;
    }
    QTemporaryDir dir;
    QString answer;
    QStringList asked;
};

} // namespace

TEST_F(BlendPage, ImagesOfEitherTypeAndSizeFromTheTable) {
    // Empty rows as "nv": an image of the chosen size without records.
    for (int kb : {4, 24}) {
        page->sizeEdit->setValue(kb);
        answer = dir.filePath(QString("empty%1.bin").arg(kb));
        EXPECT_EQ(choose(page->exportBox, 1),
                  QStringList{f("blend/setting/saveFileSuccessFmt", "NV", qUtf8Printable(answer))});
        EXPECT_EQ(QFile(answer).size(), kb * 1024);
        int type = -1;
        EXPECT_TRUE(image(answer, &type).isEmpty());
        EXPECT_EQ(type, 1);
    }
    EXPECT_EQ(asked.first(), "*.bin|nv.bin");

    // As "partition" the key items must each be there once; nothing is asked or written.
    page->typeBox->setCurrentIndex(0);
    asked.clear();
    const QString keyLine = f("blend/setting/partitionNeedIncludeItemFmt", "partition,uboot");
    EXPECT_EQ(choose(page->exportBox, 1), QStringList{keyLine});
    put(0, "UBOOT", "ABC", "boot loader");
    put(2, "", "no name");
    put(3, "ssid", "Bench Net");
    put(5, "Partition", "Table1");
    put(6, "uboot", "second");
    EXPECT_EQ(choose(page->exportBox, 1), QStringList{keyLine});
    EXPECT_TRUE(asked.isEmpty());

    // Key items first, lower-cased, in their order; the table keeps what was typed, and a value
    // without a name stays in it but not in the image.
    put(6, "", "");
    page->sizeEdit->setValue(8);
    answer = dir.filePath("part.bin");
    choose(page->exportBox, 1);
    EXPECT_EQ(asked.last(), "*.bin|partition.bin");
    int type = -1;
    const QList<NvItem> saved = image(answer, &type);
    EXPECT_EQ(type, 0);
    ASSERT_EQ(saved.size(), 3);
    EXPECT_EQ(saved[0].name, "uboot");
    EXPECT_EQ(saved[0].value, "abc");
    EXPECT_EQ(saved[1].name, "partition");
    EXPECT_EQ(saved[1].value, "table1");
    EXPECT_EQ(saved[2].value, "Bench Net");
    EXPECT_TRUE(saved[0].desc.isEmpty());
    EXPECT_EQ(page->row(0).name->text(), "UBOOT");
    EXPECT_EQ(page->row(2).value->text(), "no name");

    // A list that does not fit its size fails and leaves the file that stood there.
    for (int i = 10; i < 100; ++i)
        put(i, QString("item%1").arg(i), QString(60, 'v'));
    page->sizeEdit->setValue(4);
    EXPECT_EQ(choose(page->exportBox, 1).last(),
              f("blend/setting/saveFileFailedFmt", "partition", qUtf8Printable(answer)));
    EXPECT_EQ(image(answer).size(), 3);
    EXPECT_FALSE(QFile::exists(answer + ".part"));
}

TEST_F(BlendPage, LoadsFillTheTableOrLeaveItAsItWas) {
    // Conf to table to image to table to conf keeps every name and value; an image carries no
    // description.
    QList<NvItem> items;
    for (int i = 0; i < 12; ++i)
        items.append(
            {QString("name%1").arg(i), QString("value %1").arg(i), QString("desc %1").arg(i)});
    const QString conf = dir.filePath("in.conf");
    ASSERT_TRUE(page->utils.saveConfFile(items, conf));
    answer = conf;
    EXPECT_EQ(choose(page->importBox, 0),
              QStringList{f("blend/setting/nvSetting/loadSuccessFmt", qUtf8Printable(conf))});
    EXPECT_EQ(asked.last(), "*.conf|");
    EXPECT_EQ(page->row(11).desc->text(), "desc 11");
    answer = dir.filePath("mid.bin");
    choose(page->exportBox, 1);
    choose(page->otherBox, 0);
    EXPECT_TRUE(page->readTable().isEmpty());
    page->typeBox->setCurrentIndex(0);
    EXPECT_EQ(choose(page->importBox, 1),
              QStringList{f("blend/setting/nvBin/loadSuccessFmt", "NV", qUtf8Printable(answer))});
    EXPECT_EQ(page->typeBox->currentIndex(), 1);
    EXPECT_EQ(page->row(11).name->text(), "name11");
    EXPECT_TRUE(page->row(11).desc->text().isEmpty());
    answer = dir.filePath("out.conf");
    choose(page->exportBox, 0);
    QList<NvItem> back;
    ASSERT_TRUE(page->utils.loadConfFile(answer, back));
    ASSERT_EQ(back.size(), items.size());
    for (int i = 0; i < items.size(); ++i) {
        EXPECT_EQ(back[i].name, items[i].name);
        EXPECT_EQ(back[i].value, items[i].value);
    }

    // A partition image switches the type box.
    page->typeBox->setCurrentIndex(0);
    choose(page->otherBox, 0);
    put(0, "partition", "t");
    put(1, "uboot", "u");
    answer = dir.filePath("p.bin");
    choose(page->exportBox, 1);
    page->typeBox->setCurrentIndex(1);
    choose(page->importBox, 1);
    EXPECT_EQ(page->typeBox->currentIndex(), 0);

    // More items than rows, a broken file, a cancel and the placeholder change nothing.
    QList<NvItem> many;
    for (int i = 0; i < 101; ++i)
        many.append({QString("n%1").arg(i), "v", ""});
    ASSERT_TRUE(page->utils.saveConfFile(many, dir.filePath("many.conf")));
    answer = dir.filePath("many.conf");
    EXPECT_EQ(choose(page->importBox, 0), QStringList{f("blend/setting/tooManyItemsFmt",
                                                        qUtf8Printable(answer), "101", "100")});
    answer = dir.filePath("broken.bin");
    writeFile(answer, QByteArray(4096, '\x5a'));
    EXPECT_EQ(choose(page->importBox, 1).last(),
              f("blend/setting/nvBin/loadFailedFmt", qUtf8Printable(answer)));
    answer.clear();
    EXPECT_EQ(choose(page->importBox, 0), QStringList{w("blend/setting/userCancelled")});
    const int asks = asked.size();
    EXPECT_TRUE(choose(page->importBox, page->importBox->count() - 1).isEmpty());
    EXPECT_EQ(asked.size(), asks);
    EXPECT_EQ(page->row(1).name->text(), "uboot");
    EXPECT_EQ(page->readTable().size(), 2);
}
