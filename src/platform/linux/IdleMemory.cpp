#include "IdleMemory.h"

#include <malloc.h>
#include <QFile>
#include <sys/mman.h>

namespace velmora {

void releaseIdleMemory()
{
    malloc_trim(0);
    // Only clean pages of read-only file mappings (code and constant data): they are
    // dropped, never written anywhere, and the kernel skips pages other processes map.
    QFile maps(QStringLiteral("/proc/self/maps"));
    if (!maps.open(QIODevice::ReadOnly))
        return;
    for (const QByteArray& line : maps.readAll().split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() < 6 || !fields[5].startsWith('/') || fields[1].contains('w'))
            continue;
        const QList<QByteArray> range = fields[0].split('-');
        bool okStart = false, okEnd = false;
        const quintptr start = range.value(0).toULongLong(&okStart, 16);
        const quintptr end = range.value(1).toULongLong(&okEnd, 16);
        if (okStart && okEnd && end > start)
            madvise(reinterpret_cast<void*>(start), end - start, MADV_PAGEOUT);
    }
}

} // namespace velmora
