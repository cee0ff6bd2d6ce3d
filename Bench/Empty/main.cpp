#include <QByteArray>

/// The least that a program with Qt Core costs: it is loaded, and ends.
int main()
{
    return qstrcmp(qVersion(), "") == 0;
}
