#include "SdioNames.h"

#include <array>

namespace sdio {

namespace {

struct Command {
    std::string_view name;
    Response response = Response::R1;
};

using R = Response;

/// 4.7.4, and for 5, 52 and 53 the SDIO standard.
constexpr std::array<Command, 64> commands = {{
    {"GO_IDLE_STATE", R::None},
    {},
    {"ALL_SEND_CID", R::R2},
    {"SEND_RELATIVE_ADDR", R::R6},
    {"SET_DSR", R::None},
    {"IO_SEND_OP_COND", R::R4},
    {"SWITCH_FUNC"},
    {"SELECT_CARD", R::R1b},
    {"SEND_IF_COND", R::R7},
    {"SEND_CSD", R::R2},
    {"SEND_CID", R::R2},
    {"VOLTAGE_SWITCH"},
    {"STOP_TRANSMISSION", R::R1b},
    {"SEND_STATUS"},
    {},
    {"GO_INACTIVE_STATE", R::None},
    {"SET_BLOCKLEN"},
    {"READ_SINGLE_BLOCK"},
    {"READ_MULTIPLE_BLOCK"},
    {"SEND_TUNING_BLOCK"},
    {"SPEED_CLASS_CONTROL", R::R1b},
    {},
    {"ADDRESS_EXTENSION"},
    {"SET_BLOCK_COUNT"},
    {"WRITE_BLOCK"},
    {"WRITE_MULTIPLE_BLOCK"},
    {},
    {"PROGRAM_CSD"},
    {"SET_WRITE_PROT", R::R1b},
    {"CLR_WRITE_PROT", R::R1b},
    {"SEND_WRITE_PROT"},
    {},
    {"ERASE_WR_BLK_START"},
    {"ERASE_WR_BLK_END"},
    {},
    {},
    {},
    {},
    {"ERASE", R::R1b},
    {},
    {"READ_DPS"},
    {},
    {"LOCK_UNLOCK"},
    {"Q_MANAGEMENT", R::R1b},
    {"Q_TASK_INFO_A"},
    {"Q_TASK_INFO_B"},
    {"Q_RD_TASK"},
    {"Q_WR_TASK"},
    {"READ_EXTR_SINGLE"},
    {"WRITE_EXTR_SINGLE"},
    {},
    {},
    {"IO_RW_DIRECT", R::R5},
    {"IO_RW_EXTENDED", R::R5},
    {},
    {"APP_CMD"},
    {"GEN_CMD"},
    {},
    {"READ_EXTR_MULTI"},
    {"WRITE_EXTR_MULTI"},
    {},
    {},
    {},
    {},
}};

} // namespace

std::string_view commandName(std::uint8_t index, bool isApplication)
{
    if (isApplication) {
        switch (index) {
        case 6:
            return "SET_BUS_WIDTH";
        case 13:
            return "SD_STATUS";
        case 22:
            return "SEND_NUM_WR_BLOCKS";
        case 23:
            return "SET_WR_BLK_ERASE_COUNT";
        case sendOpCond:
            return "SD_SEND_OP_COND";
        case 42:
            return "SET_CLR_CARD_DETECT";
        case 51:
            return "SEND_SCR";
        default:
            break; // an application command that is not defined is taken for the plain one (4.3.9)
        }
    }
    return commands[index % commands.size()].name;
}

Response responseOf(std::uint8_t index, bool isApplication)
{
    if (isApplication && index == sendOpCond) {
        return Response::R3;
    }
    return commands[index % commands.size()].response;
}

std::string_view responseName(Response response)
{
    static constexpr std::array<std::string_view, 9> names = {"", "R1", "R1b", "R2", "R3", "R4", "R5", "R6", "R7"};
    return names[std::size_t(response)];
}

std::string_view stateName(std::uint32_t status)
{
    static constexpr std::array<std::string_view, 16> names = {
        "idle", "ready",   "ident",    "stby",     "tran",     "data",     "rcv",      "prg",
        "dis",  "state 9", "state 10", "state 11", "state 12", "state 13", "state 14", "state 15"};
    return names[status >> 9 & 15U];
}

std::string_view errorName(std::uint32_t status)
{
    static constexpr std::array<std::string_view, 32> names = {"",
                                                               "",
                                                               "",
                                                               "AKE_SEQ_ERROR",
                                                               "",
                                                               "",
                                                               "",
                                                               "",
                                                               "",
                                                               "",
                                                               "",
                                                               "",
                                                               "",
                                                               "",
                                                               "",
                                                               "WP_ERASE_SKIP",
                                                               "CSD_OVERWRITE",
                                                               "",
                                                               "",
                                                               "ERROR",
                                                               "CC_ERROR",
                                                               "CARD_ECC_FAILED",
                                                               "ILLEGAL_COMMAND",
                                                               "COM_CRC_ERROR",
                                                               "LOCK_UNLOCK_FAILED",
                                                               "",
                                                               "WP_VIOLATION",
                                                               "ERASE_PARAM",
                                                               "ERASE_SEQ_ERROR",
                                                               "BLOCK_LEN_ERROR",
                                                               "ADDRESS_ERROR",
                                                               "OUT_OF_RANGE"};
    for (unsigned bit = 32; bit > 0; --bit) {
        if ((status >> (bit - 1) & 1U) != 0 && !names[bit - 1].empty()) {
            return names[bit - 1];
        }
    }
    return {};
}

std::string_view blockStatusName(std::uint8_t status)
{
    switch (status) {
    case 2:
        return "accepted";
    case 5:
        return "CRC error";
    case 6:
        return "write error";
    default:
        return "unknown status";
    }
}

} // namespace sdio
