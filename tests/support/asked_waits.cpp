#include "asked_waits.h"

#include <QTimer>

using slot_object = QtPrivate::QSlotObjectBase;

void real_single_shot(int msec, Qt::TimerType type, const QObject* receiver, slot_object* slot) asm(
    "__real__ZN6QTimer14singleShotImplEiN2Qt9TimerTypeEPK7QObjectPN9QtPrivate15QSlotObjectBaseE");

void single_shot(int msec, Qt::TimerType type, const QObject* receiver, slot_object* slot) asm(
    "__wrap__ZN6QTimer14singleShotImplEiN2Qt9TimerTypeEPK7QObjectPN9QtPrivate15QSlotObjectBaseE");

void single_shot(int msec, Qt::TimerType type, const QObject* receiver, slot_object* slot)
{
    asked_single_shots() += msec;
    real_single_shot(msec, type, receiver, slot);
}

QList<int>& asked_single_shots()
{
    static QList<int> all;
    return all;
}
