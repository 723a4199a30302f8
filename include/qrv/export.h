/* Marks what the shared library exports. Everything else is hidden. */
#ifndef QRV_EXPORT_H
#define QRV_EXPORT_H

#define QRV_API __attribute__((visibility("default")))

#endif
