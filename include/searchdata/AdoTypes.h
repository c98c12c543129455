#pragma once

namespace searchdata {

/// Field types by the numeric codes that stored definitions and structures use.
enum AdoType : int {
    adEmpty = 0,
    adSmallInt = 2,
    adInteger = 3,
    adSingle = 4,
    adDouble = 5,
    adCurrency = 6,
    adDate = 7,
    adBoolean = 11,
    adDecimal = 14,
    adTinyInt = 16,
    adUnsignedTinyInt = 17,
    adBigInt = 20,
    adGUID = 72,
    adBinary = 128,
    adChar = 129,
    adNumeric = 131,
    adDBTime = 134,
    adDBTimeStamp = 135,
    adVarWChar = 202,
    adLongVarWChar = 203,
    adVarBinary = 204,
    adLongVarBinary = 205,
};

} // namespace searchdata
