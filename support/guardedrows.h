// Rows in pages of their own, each between two pages that end whoever touches them.
#ifndef SUPPORT_GUARDEDROWS_H
#define SUPPORT_GUARDEDROWS_H

#include <cstddef>

namespace support {

// A row of n bytes starts at Begin(y), so that the byte before it is protected, or at End(y) - n,
// so that the byte after it is. A variant test runs both ways. The bytes in between start as kFill.
class GuardedRows {
  public:
    static constexpr unsigned char kFill = 0xA5;

    // Room for nRows rows of up to nMaxBytes bytes.
    GuardedRows(std::size_t nRows, std::size_t nMaxBytes);
    ~GuardedRows();
    GuardedRows(const GuardedRows&) = delete;
    GuardedRows& operator=(const GuardedRows&) = delete;

    unsigned char* Begin(std::size_t nRow) const { return m_pMapped + m_nPage + nRow * Stride(); }
    unsigned char* End(std::size_t nRow) const { return Begin(nRow) + m_nSize; }
    // Where a row of nBytes bytes starts that touches the protected page after it, or before it.
    unsigned char* Row(std::size_t nRow, std::size_t nBytes, bool bAtEnd) const {
        return bAtEnd ? End(nRow) - nBytes : Begin(nRow);
    }
    // From one row to the next.
    std::size_t Stride() const { return m_nSize + m_nPage; }

    void Fill();
    // Whether all bytes are the same, those around the rows included.
    bool operator==(const GuardedRows& other) const;

  private:
    std::size_t m_nPage;
    std::size_t m_nRows;
    std::size_t m_nSize;  // of the pages of one row
    unsigned char* m_pMapped;
};

}  // namespace support

#endif  // SUPPORT_GUARDEDROWS_H
