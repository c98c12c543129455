#pragma once

/// The public enumerations of searchdata. Names and values are part of the interface that hosts and
/// stored data (definition rows, profiles) depend on, so none of them may change.
namespace searchdata {

/// Kind of a search column, as stored in the definition table's `Type` field.
enum FilterColumnTypeConstants : int {
    fcUndefined = -1,
    fcKeyword = 0,
    fcText = 1,
    fcInteger16 = 2,
    fcInteger32 = 3,
    fcSingle = 4,
    fcDouble = 5,
    fcDateTime = 6,
    fcBoolean = 7,
    fcNote = 8,
};

/// How a filter term compares: decides which operations and compare texts are allowed.
enum FilterComparisonClasses : int {
    kvoCC_Unknown = 0,
    kvoCC_Boolean = 1,
    kvoCC_Keyword = 2,
    kvoCC_Text = 3,
    kvoCC_Numeric = 4,
    kvoCC_Date = 5,
};

/// The operation of a filter term. `kvoOP_GreatorOrEqual` keeps its historic spelling.
enum EComparisonOperations : int {
    kvoOP_IsFalse = 0,
    kvoOP_IsTrue = 1,
    kvoOP_Equals = 2,
    kvoOP_NotEquals = 3,
    kvoOP_Less = 4,
    kvoOP_Greater = 5,
    kvoOP_LessOrEqual = 6,
    kvoOP_GreatorOrEqual = 7,
    kvoOP_IsLike = 8,
    kvoOP_IsNotLike = 9,
    kvoOP_Includes = 10,
    kvoOP_Excludes = 11,
};

/// How a filter term joins the terms before it.
enum EConjunctions : int {
    kvoCJ_None = 0,
    kvoCJ_And = 1,
    kvoCJ_OR = 2,
};

/// Outcome of opening a search on a base table. Value 8 keeps its historic letters `FSC`.
enum ColumnsStatusConstants : int {
    kvoFCSUndefinedStatus = 0,
    kvoFCSSuccess = 1,
    kvoFCSNoColumnsDefined = 2,
    kvoFCSMissingDatabase = 3,
    kvoFCSMissingBaseTable = 4,
    kvoFCSInvalidBaseTable = 5,
    kvoFCSBaseTableNotDefined = 6,
    kvoFCSBaseTableMissingPrimaryIndex = 7,
    kvoFSCBaseTablePrimaryIndexSegmented = 8,
    kvoFCSMissingDatabaseHandler = 9,
    kvoFCSMissingProfile = 10,
};

/// Result of a dialog.
enum FilterStatusConstants : int {
    fltr_SUCCESS = 0,
    fltr_NOT_DEFINED = 1,
    fltr_FAILURE = 2,
};

/// Whether the host works on its live tables or on its archive; filters are kept apart per mode.
enum EFilterDatabaseModes : int {
    fltrDBMode_Normal = 0,
    fltrDBMode_Archive = 1,
};

/// Mode of the entry control.
enum KVOSearchEditExamineModes : int {
    kseModeEdit = 0,
    kseModeExamine = 1,
};

/// Where the default of a date-time column comes from.
enum EFilterColumnDateTimeDefaultModeConstants : int {
    fcDTDM_Configure = 0,
    fcDTDM_Now = 1,
    _fcDTDM_First = 0,
    _fcDTDM_Last = 1,
    _fcDTDM_Max = 2,
};

/// Result of copying a configuration between base tables.
enum ESearchFilterCopyConfigurationResults : int {
    fltrCCR_Failed = 0,
    fltrCCR_Success = 1,
};

/// The host menu items whose captions and pictures the library supplies.
enum FilterMenuItems : int {
    fltr_FMI_EDITDATA = 0,
    fltr_FMI_FILTER = 1,
    fltr_FMI_CLEARFILTER = 2,
    fltr_FMI_VIEWDATA = 3,
    fltr_FMI_INCLUDESEARCHDATA = 4,
    fltr_FMI_SHOWSEARCHDATAWINDOW = 5,
    fltr_FMI_SWITCHTOSEARCHCOLUMNS = 6,
    fltr_FMI_EDITPICKLISTS = 7,
};

/// The ready-made column sets of demonstration data.
enum EDemoColumnSet : int {
    fltrDCS_Undefined = 0,
    fltrDCS_DncFile = 1,
    fltrDCS_ControlledDocument = 2,
    fltrDCS_Packet = 3,
};

/// The phases of importing a data block.
enum ImportActions : int {
    kvoTLImportInitialize = 0,
    kvoTLImportData = 1,
    kvoTLImportCleanup = 2,
};

} // namespace searchdata
