// The smallest Qt Widgets window: what start-up and memory are held against.
#include <QApplication>
#include <QLabel>

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    QLabel window(QStringLiteral("Hej världen"));
    window.setObjectName(QStringLiteral("hello"));
    window.show();
    return application.exec();
}
