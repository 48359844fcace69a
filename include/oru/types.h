/*
 * The object types of the library. They are opaque unless a header of their own
 * publishes the record: callers hold pointers and use the operations.
 */
#ifndef ORU_TYPES_H
#define ORU_TYPES_H

#include "oru/base.h"

/* Scalar objects. */
typedef struct ORUDoName ORUDoName;
typedef struct ORUDoStrbuf ORUDoStrbuf;
typedef struct ORUDoValue ORUDoValue;
typedef struct ORUDoValueFormatter ORUDoValueFormatter;
typedef struct ORUDoError ORUDoError;
typedef struct ORUDoPropErr ORUDoPropErr;
typedef struct ORUDoPropErrs ORUDoPropErrs;
typedef struct ORUDoErrorList ORUDoErrorList;
typedef struct ORUDoUri ORUDoUri;
typedef struct ORUDoUriSegment ORUDoUriSegment;

/* Containers, and the record that walks them. */
typedef struct ORUDoIter ORUDoIter;
typedef struct ORUDoProperty ORUDoProperty;
typedef struct ORUDoProperties ORUDoProperties;
typedef struct ORUDoPropertiesList ORUDoPropertiesList;
typedef struct ORUDoNvlist ORUDoNvlist;
typedef struct ORUDoNvlistItem ORUDoNvlistItem;
typedef struct ORUDoVlist ORUDoVlist;
typedef struct ORUDoNlist ORUDoNlist;
typedef struct ORUDoNtlist ORUDoNtlist;
typedef struct ORUDoNtlistItem ORUDoNtlistItem;
typedef struct ORUDoVtable ORUDoVtable;
typedef struct ORUDoVtableItem ORUDoVtableItem;
typedef struct ORUDoDtree ORUDoDtree;
typedef struct ORUDoConfigOp ORUDoConfigOp;
typedef struct ORUDoConfigOps ORUDoConfigOps;
typedef struct ORUDoEvent ORUDoEvent;
typedef struct ORUDoRowProperties ORUDoRowProperties;
typedef struct ORUDoRowProperty ORUDoRowProperty;
typedef struct ORUVtableSorter ORUVtableSorter;
typedef struct ORUHashtable ORUHashtable;

/* Descriptions from the metadata store. */
typedef struct ORUDoMrMeta ORUDoMrMeta;
typedef struct ORUDoMrMetaList ORUDoMrMetaList;
typedef struct ORUDoPropMeta ORUDoPropMeta;
typedef struct ORUDoPropMetaList ORUDoPropMetaList;
typedef struct ORUDoActMeta ORUDoActMeta;
typedef struct ORUDoActMetaList ORUDoActMetaList;
typedef struct ORUDoTypedefMeta ORUDoTypedefMeta;
typedef struct ORUDoConstraint ORUDoConstraint;
typedef struct ORUDoConstraintList ORUDoConstraintList;
typedef struct ORUDoCondition ORUDoCondition;
typedef struct ORUDoRange ORUDoRange;

/* Providers and the data tree language. */
typedef struct ORUErrorIfc ORUErrorIfc;
typedef struct ORUDataIfc ORUDataIfc;
typedef struct ORUCollIfc ORUCollIfc;
typedef struct ORUDtlCursor ORUDtlCursor;
typedef struct ORUPrCrudxHandler ORUPrCrudxHandler;
typedef struct ORUPrCtx ORUPrCtx;
typedef struct ORUPrInstanceCtx ORUPrInstanceCtx;
typedef struct ORUDtlNode ORUDtlNode;
typedef struct ORUDtlMrInfo ORUDtlMrInfo;
typedef struct ORUDtlCtx ORUDtlCtx;

#endif
