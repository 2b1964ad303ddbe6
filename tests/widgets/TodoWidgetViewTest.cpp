#include "widgets/ShownWidget.h"

#include <QInputMethodEvent>

using namespace velmora;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TodoWidgetViewTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_shown.emplace("todo", 154); }
    void cleanup()
    {
        m_shown->end();
        m_shown.reset();
    }

    void showsTheTasks();
    void showsTheTrash();
    void takesANewTask();
    void closesTheRow();
    void keepsWhatIsTyped();
    void composedText();

private:
    [[nodiscard]] TodoService &service() { return *m_shown->services.todoService(); }
    void grant();
    [[nodiscard]] QString body() const;
    void pressRow(const QString &description);
    [[nodiscard]] QQuickItem *field() const;
    [[nodiscard]] int wishes(const char *type) const { return int(m_shown->items(type).size()); }
    void type(const QString &text);

    std::optional<ShownWidget> m_shown;
};

void TodoWidgetViewTest::grant()
{
    service().requestAccess();
    m_shown->platform.reminders.answers.give();
}

/// What stands below the header.
QString TodoWidgetViewTest::body() const
{
    return m_shown->texts("NotchText").mid(1).join(u", "_s);
}

/// Presses a button by its description. Those in rows are as high as a row has room.
void TodoWidgetViewTest::pressRow(const QString &description)
{
    m_shown->view.grabWindow(); // new rows have their places then
    for (QQuickItem *button : m_shown->items("SymbolButton")) {
        if (button->property("description") == description) {
            QTest::mouseMove(&m_shown->view, ShownWidget::place(*button).center().toPoint());
            QTest::mouseClick(&m_shown->view, Qt::LeftButton, {},
                              ShownWidget::place(*button).center().toPoint());
            return;
        }
    }
    QFAIL(qPrintable(description));
}

QQuickItem *TodoWidgetViewTest::field() const
{
    const auto fields = m_shown->items("QQuickTextInput");
    return fields.isEmpty() ? nullptr : fields.front();
}

void TodoWidgetViewTest::type(const QString &text)
{
    m_shown->view.requestActivate();
    QVERIFY(QTest::qWaitForWindowActive(&m_shown->view));
    for (const QChar character : text) {
        QTest::keyClick(&m_shown->view, character.toLatin1());
    }
}

void TodoWidgetViewTest::showsTheTasks()
{
    service().add(u"one"_s);
    QCOMPARE(body(), u"Grant Reminders Access"_s); // local tasks included
    service().deleteItem(service().items().front());
    grant();
    QCOMPARE(body(), u"All done!"_s);
    for (const QString &title : {u"d"_s, u"c"_s, u"a long\ntitle that has no room"_s, u"a"_s}) {
        service().add(title);
    }
    QCOMPARE(body(), u"a, a long title that has no room, c, +1 more"_s);
    QVERIFY(m_shown->items("NotchText").at(2)->property("truncated").toBool());
    const QRectF last = ShownWidget::place(*m_shown->items("NotchText").last());
    QVERIFY(last.bottom() < 90);

    pressRow(u"Complete a"_s); // leaves at once
    QCOMPARE(body(), u"a long title that has no room, c, d"_s);
    m_shown->clock.advance(700ms);
    QCOMPARE(service().items().size(), 3U);
    QCOMPARE(m_shown->items("SymbolButton").size(), 2 + 3);
    m_shown->view.grabWindow();
    QTest::mouseMove(&m_shown->view,
                     ShownWidget::place(*m_shown->items("TodoRowView").at(1)).center().toPoint());
    QTRY_COMPARE(m_shown->items("SymbolButton").size(), 2 + 3 + 1); // of the row under the pointer
    pressRow(u"Delete c"_s);
    QCOMPARE(body(), u"a long title that has no room, d"_s);
    QCOMPARE(service().trash().front().item.title, u"c"_s);
}

void TodoWidgetViewTest::showsTheTrash()
{
    m_shown->press({u"Show trash"_s});
    QCOMPARE(body(), QString());
    for (int i = 0; i < 5; ++i) {
        service().add(QString::number(i));
        service().deleteItem(service().items().front());
    }
    QCOMPARE(body(), u"4, 3, 2, +2 more"_s); // without access
    pressRow(u"Restore 3"_s);
    QCOMPARE(body(), u"4, 2, 1, +1 more"_s);
    m_shown->press({u"New task"_s});
    QVERIFY(field()); // wins
    m_shown->press({u"Discard"_s});
    QCOMPARE(body(), u"4, 2, 1, +1 more"_s);
    grant();
    m_shown->press({u"Show tasks"_s});
    QCOMPARE(body(), u"3"_s);
}

void TodoWidgetViewTest::takesANewTask()
{
    grant();
    QCOMPARE(wishes("velmora::KeyboardWish"), 0);
    m_shown->press({u"New task"_s});
    QCOMPARE(wishes("velmora::KeyboardWish"), 1);
    QCOMPARE(wishes("velmora::StayWish"), 0);
    type(u"   "_s);
    QCOMPARE(wishes("velmora::StayWish"), 1);
    QTest::keyClick(&m_shown->view, Qt::Key_Return);
    QVERIFY(field()); // nothing but blanks
    type(u"milk "_s);
    QTest::keyClick(&m_shown->view, Qt::Key_Return);
    QVERIFY(!field());
    QCOMPARE(wishes("velmora::KeyboardWish"), 0);
    QCOMPARE(service().items().front().title, u"   milk "_s);
    m_shown->press({u"New task"_s});
    QCOMPARE(field()->property("text").toString(), QString());
    type(u"eggs"_s);
    m_shown->press({u"Add task"_s});
    QCOMPARE(body(), u"eggs, milk"_s);
}

void TodoWidgetViewTest::closesTheRow()
{
    for (const bool byKey : {true, false}) {
        m_shown->press({u"New task"_s});
        type(u"milk"_s);
        if (byKey) {
            QTest::keyClick(&m_shown->view, Qt::Key_Escape);
        } else {
            m_shown->press({u"Discard"_s});
        }
        QVERIFY(!field());
        QCOMPARE(service().draft(), QString());
    }
    QVERIFY(service().items().empty());
}

/// The view may go while somebody types: its screen changes, or files are dragged over it.
void TodoWidgetViewTest::keepsWhatIsTyped()
{
    m_shown->press({u"New task"_s});
    type(u"milk"_s);
    const QUrl source = m_shown->view.source();
    m_shown->view.setSource({});
    m_shown->view.setSource(source);
    QCOMPARE(field()->property("text").toString(), u"milk"_s);
    QCOMPARE(wishes("velmora::StayWish"), 1);
    QCOMPARE(wishes("velmora::KeyboardWish"), 0); // it comes back by itself, and takes nothing
    QTest::mouseClick(&m_shown->view, Qt::LeftButton, {},
                      field()->mapToScene({field()->width() - 2, 5}).toPoint());
    QCOMPARE(wishes("velmora::KeyboardWish"), 1);
    type(u"s"_s);
    m_shown->press({u"Add task"_s});
    QCOMPARE(service().items().front().title, u"milks"_s);
}

void TodoWidgetViewTest::composedText()
{
    m_shown->press({u"New task"_s});
    type(u"caf"_s);
    QInputMethodEvent composing(u"´"_s, {});
    QCoreApplication::sendEvent(field(), &composing);
    QInputMethodEvent composed;
    composed.setCommitString(u"é"_s);
    QCoreApplication::sendEvent(field(), &composed);
    QTest::keyClick(&m_shown->view, Qt::Key_Return);
    QCOMPARE(service().items().front().title, u"café"_s);
    m_shown->press({u"New task"_s});
    QInputMethodEvent begun(u"あ"_s, {});
    QCoreApplication::sendEvent(field(), &begun);
    QCOMPARE(wishes("velmora::StayWish"), 1); // it would be lost as well
}

QTEST_MAIN(TodoWidgetViewTest)
#include "TodoWidgetViewTest.moc"
