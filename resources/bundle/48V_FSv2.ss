#define PROFILESTARTADDRESS 0x9C00
#define NUMPROFILETYPES 3

struct global_settings { // Settings : "Global settings", global_settings
    unsigned char type;                             // num, auto, 5, 5, *1, 0, "type", "not displayed", "type", 5, -1, basic
    unsigned char brightness;                       // num, auto, 0, 9, *1, 0, "Brightness", "", "brightness", 5, 0, advanced
    unsigned char screensaver_delay_m;              // num, auto, 0, 240, *1, 0, "Screensaver Delay", "min", "screensaver_delay", 5, 2, advanced
    unsigned char flip_display;                     // bool, auto, "Rotate Display", "flip_display", 0, 1, advanced
    unsigned int longpress_time_cs;                 // num, auto, shortpress_time_cs*2, 2, *0.01, 2, "Longpress Time", "s", "longpress_time", 0.8, 3, advanced
    unsigned int shortpress_time_cs;                // num, auto, 0.01, 0.03, *0.01, 2, "Shortpress Time", "s", "shortpress_time", 0.02, -4, advanced
    unsigned int release_debounce_time_cs;          // num, auto, 0.01, 0.03, *0.01, 2, "Debounce Time", "s", "debounce_time", 0.01, -5, advanced
    unsigned int cable_resistance_mOhm;             // num, auto, 0, 0.999, *0.001, 3, "Cable Resistance", "Ohm", "cable_resistance", 0.087, 4, advanced
    unsigned char splashscreen_time_decis;          // num, auto, 0.8, 10, *0.1, 1, "Splashscreen Time", "s", "splashscreen_time", 2, -7, advanced
    unsigned char current_tare_period_minutes;      // num, auto, 0, 255, *1, 0, "Current Tare Period", "min", "current_tare_period", 30, 5, advanced
    signed int voltage_gain_tweak_vv;               // num, auto, -1000, 1000, *1, 0, "Voltage Gain Tweak", "V/V", "voltage_gain_tweak", 0, -9, advanced
    signed int current_gain_tweak_vv;               // num, auto, -2000, 2000, *1, 0, "Current Gain Tweak", "A/A", "current_gain_tweak", 0, -10, advanced
    signed int voltage_offset_tweak_lsb;            // num, auto, -3276, 3276, *1, 0, "Voltage Offset Tweak", "LSB", "voltage_offset_tweak", 0, -11, advanced
    signed char temperature_limit_degrees_celsius;  // num, auto, 30, 75, *1, 0, "Temperature Limit", "°C", "temperature_limit", 70, -12, advanced
    unsigned char checksum;                         // num, auto, 0, 255, *1, 0, "checksum", "not displayed", "checksum", 6, -2, basic
}

struct global_stats { // Settings : "Global stats", global_stats
    unsigned char type;                             // num, auto, 6, 6, *1, 0, "type", "not displayed", "type", 6, -1, basic
    unsigned long totalchargetime;                  // num, auto, 0, 4294967295, *0.0002777777, 2, "Total Charging Time", "h", "charge_time", 0, 0, advanced
    unsigned long lifetime;                         // num, auto, 0, 4294967295, *0.0002777777, 2, "Power On Time", "h", "lifetime", 0, 1, advanced
    unsigned long charge_cycles;                    // num, auto, 0, 4294967295, *1, 0, "Charge Cycles", "", "charge_cycles", 0, 2, advanced
    unsigned long long ah_total;                    // num, auto, 0, 18446744073709551615, *0.0002777777, 1, "Total Amp Hours", "Ah", "total_amps_low", 0, 3, advanced
    unsigned long long wh_total;                    // num, auto, 0, 18446744073709551615, *0.0002777777, 1, "Total Watt Hours", "Wh", "total_watts_low", 0, 4, advanced
    unsigned char checksum;                         // num, auto, 0, 255, *1, 0, "checksum", "not displayed", "checksum", 0, -6, basic
}

struct profile_stats { // Settings : "Profile stats", profile_stats
    unsigned char type;                             // num, auto, 7, 7, *1, 0, "type", "not displayed", "type", 7, -1, basic
    unsigned char profile_id;                       // num, auto, 0, 255, *1, 0, "profile_id", "not displayed", "profile_id", 0, -2, basic
    unsigned long Wh;                               // num, auto, 0, 4294967295, *0.1, 0, "Watt Hours", "Wh", "watt_hours", 0, 0, basic
    unsigned long Ah;                               // num, auto, 0, 4294967295, *0.01, 1, "Amp Hours", "Ah", "amp_hours", 0, 1, basic
    unsigned long chargetime_s;                     // num, auto, 0, 4294967295, *0.0002777777, 2, "Charge Time", "h", "charge_time", 0, 2, basic
    unsigned long charge_count;                     // num, auto, 0, 4294967295, *1, 0, "Charge Cycles", "", "charge_count", 0, 3, basic
    unsigned long average_Wh;                       // num, auto, 0, Wh, *1, 0, "Watt Hours", "Wh/Charge", "calculated", (Wh/charge_count), 4, basic
    unsigned long average_Ah;                       // num, auto, 0, Ah, *1, 1, "Amp Hours", "Ah/Charge", "calculated", (Ah/charge_count), 5, basic
    unsigned long average_time;                     // num, auto, 0, chargetime_s, *1, 2, "Charge Time", "h/Charge", "calculated", (chargetime_s/charge_count), 6, basic
    unsigned char checksum;                         // num, auto, 0, 255, *1, 0, "checksum", "not displayed", "checksum", 0, -3, basic
}

struct page_counter { // Settings : "Page counter", page_counter
    unsigned char type;                             // num, auto, 3, 3, *1, 0, "type", "not displayed", "type", 3, -1, basic
    unsigned char count;                            // num, auto, 0, 255, *1, 0, "count", "not displayed", "count", 0, -2, basic
    unsigned char checksum;                         // num, auto, 0, 255, *1, 0, "checksum", "not displayed", "checksum", 6, -3, basic
}

struct version { // Settings : "Version", version
    unsigned char type;                             // num, auto, 4, 4, *1, 0, "type", "not displayed", "type", 4, -1, basic
    unsigned char version;                          // num, auto, 0, 255, *1, 0, "version", "not displayed", "version", 0, -1, basic
    unsigned char checksum;                         // num, auto, 0, 255, *1, 0, "checksum", "not displayed", "checksum", 6, -2, basic
}

struct hardwareVersion { // Settings : "Hardware Version", hw_version
    unsigned char type;                             // num, auto, 16, 16, *1, 0, "type", "not displayed", "type", 16, -1, basic
    unsigned char version;                          // num, auto, 0, 255, *1, 0, "hardware version", "not displayed", "hardware_version", 0, -2, basic
    unsigned char checksum;                         // num, auto, 0, 255, *1, 0, "checksum", "not displayed", "checksum", 0, -3, basic
}

struct barcode { // Settings : "Barcode", barcode
    unsigned char type;                             // num, auto, 17, 17, *1, 0, "type", "not displayed", "type", 17, -1, basic
    char barcode[5];                                // string, auto, "barcode", "not displayed", "00000", -2, basic
    unsigned char checksum;                         // num, auto, 0, 255, *1, 0, "checksum", "not displayed", "checksum", 0, -3, basic
}

struct chemistry_nickel { // Settings : "Nickel", chemistry
    unsigned char type;                             // num, auto, 9, 9, *1, 0, "type", "not displayed", "type", 9, -1, basic
    unsigned char profile_id;                       // num, auto, 0, 255, *1, 0, "profile_id", "not displayed", "profile_id", 0, -2, basic
    unsigned char chemistry;                        // num, auto, 1, 1, *1, 0, "not displayed", "not displayed", "chemistry", 1, -3, basic
    unsigned char active;                           // bool, 1, "active", "active", 1, -4, basic
    unsigned char defaultprofile;                   // bool, 1, "default", "default", 0, -5, basic
    unsigned char modifiable;                       // bool, 1, "modifiable", "modifiable", 1, -6, basic
    unsigned char scheduled_for_deletion;           // bool, 1, "Scheduled for Deletion", "scheduled_for_deletion", 0, -8, basic
    unsigned char extraneous1;                      // num, 4, 0, 1, *1, 0, "not displayed", "not displayed", "extraneous1", 0, -7, basic
    char title[12];                                 // string, auto, "Name", "title", "Nickel", 0, basic
    char description[14];                           // string, auto, "Description", "subtitle", "Custom", 1, basic
    unsigned short start_I;                         // num, auto, 0.1, bulk_I, *0.001, 1, "Slow Start Current", "Amps", "slow_start_current", 0.5, 5, advanced
    unsigned short bulk_start_V;                    // num, auto, 5.07, nominal_full_V, *0.01, 1, "Bulk Start Voltage", "Volts", "bulk_start_voltage", (nominal_full_V * 8) / 10, 6, advanced
    unsigned short bulk_I;                          // num, auto, 1.0, 8.0, *0.001, 1, "Bulk Current", "Amps", "bulk_current", 8.0, 3, basic
    unsigned short nominal_full_V;                  // num, auto, 12, 48, *0.01, 1, "Nominal Voltage", "Volts", "nominal_voltage", 36, 2, basic
    unsigned short delta_V;                         // num, auto, 0.1, 1.0, *0.01, 1, "-Delta V Termination", "Volts", "charge_complete_at_-delta_v", nominal_full_V / 120, 7, advanced
    unsigned char external_thermistor;              // bool, auto, "Thermistor Reqd?", "thermistor", 0, 4, basic
    unsigned char max_T;                            // num, auto, 40.0, 70.0, *1, 0, "Max Temp Termination", "°C", "charge_complete_at_max_temperature", 55, 8, advanced
    unsigned short dTdt;                            // num, auto, 0.2, 9.9, *0.1, 1, "dT/dt Termination", "°C/min", "charge_complete_at_dt_dt", 1.0, 9, advanced
    unsigned short max_V;                           // num, auto, nominal_full_V, 63, *0.01, 1, "Max Voltage", "Volts", "charge_complete_at_max_voltage", (nominal_full_V * 14) / 10, 12, advanced
    unsigned short topup_I;                         // num, auto, 0.01, bulk_I, *0.001, 1, "Top-up Current", "Amps", "top-up_current", 0.5, 10, advanced
    unsigned short topup_time;                      // num, auto, 0, 9.9, *0.01, 1, "Top-up Time", "Hours", "top-up_time", 1.0, 11, advanced
    unsigned char checksum;                         // num, auto, 0, 255, *1, 0, "checksum", "not_displayed", "checksum", 0, -9, basic
}

struct chemistry_lead { // Settings : "Lead", chemistry
    unsigned char type;                             // num, auto, 10, 10, *1, 0, "type", "not displayed", "type", 10, -1, basic
    unsigned char profile_id;                       // num, auto, 0, 255, *1, 0, "profile_id", "not displayed", "profile_id", 0, -2, basic
    unsigned char chemistry;                        // num, auto, 2, 2, *1, 0, "not displayed", "not displayed", "chemistry", 2, -3, basic
    unsigned char active;                           // bool, 1, "active", "active", 1, -4, basic
    unsigned char defaultprofile;                   // bool, 1, "default", "default", 0, -5, basic
    unsigned char modifiable;                       // bool, 1, "modifiable", "modifiable", 1, -6, basic
    unsigned char scheduled_for_deletion;           // bool, 1, "Scheduled for Deletion", "scheduled_for_deletion", 0, -8, basic
    unsigned char extraneous1;                      // num, 4, 0, 1, *1, 0, "not displayed", "not displayed", "extraneous1", 0, -7, basic
    char title[12];                                 // string, auto, "Name", "title", "Lead", 0, basic
    char description[14];                           // string, auto, "Description", "subtitle", "Custom", 1, basic
    unsigned short bulk_I;                          // num, auto, 0.2, 8.0, *0.001, 1, "Bulk Current", "Amps", "bulk_current", 4.0, 3, basic
    unsigned short full_V;                          // num, auto, 12, 63, *0.01, 1, "Full Voltage", "Volts", "full_voltage", 43.20, 2, basic
    unsigned short full_V_min_I;                    // num, auto, 0.05, (bulk_I*4)/5, *0.001, 2, "Charge Complete Current", "Amps", "charge_complete_below_current", 0.15, 5, advanced
    unsigned short full_V_max_time;                 // num, auto, 0, 9.9, *0.001, 1, "Max Time at Full Voltage", "Hours", "max_time_at_full_voltage", 4, 6, advanced
    unsigned short float_V;                         // num, auto, (full_V * 9)/10, full_V, *0.01, 1, "Float Voltage", "Volts", "float_voltage", (full_V * 94) / 100, 4, advanced
    unsigned char checksum;                         // num, auto, 0, 255, *1, 0, "checksum", "not_displayed", "checksum", 0, -14, basic
}

struct chemistry_lithium { // Settings : "Lithium", chemistry
    unsigned char type;                             // num, auto, 8, 8, *1, 0, "type", "not displayed", "type", 8, -1, basic
    unsigned char profile_id;                       // num, auto, 0, 255, *1, 0, "profile_id", "not displayed", "profile_id", 0, -2, basic
    unsigned char chemistry;                        // num, auto, 0, 0, *1, 0, "not displayed", "not displayed", "chemistry", 0, -3, basic
    unsigned char active;                           // bool, 1, "active", "active", 1, -4, basic
    unsigned char defaultprofile;                   // bool, 1, "default", "default", 0, -5, basic
    unsigned char modifiable;                       // bool, 1, "modifiable", "modifiable", 1, -6, basic
    unsigned char scheduled_for_deletion;           // bool, 1, "Scheduled for Deletion", "scheduled_for_deletion", 0, -8, basic
    unsigned char extraneous1;                      // num, 4, 0, 1, *1, 0, "not displayed", "not displayed", "extraneous1", 0, -7, basic
    char title[12];                                 // string, auto, "Name", "title", "Lithium", 0, basic
    char description[14];                           // string, auto, "Description", "subtitle", "Custom", 1, basic
    unsigned short min_start_V;                     // num, auto, 5.07, (full_V * 9)/10, *0.01, 1, "Min Starting Voltage", "Volts", "min_starting_voltage", full_V / 2, 4, advanced
    unsigned short start_I;                         // num, auto, 0.05, bulk_I, *0.001, 2, "Start Current", "Amps", "start_current", 0.2, 5, advanced
    unsigned short bulk_start_V;                    // num, auto, min_start_V, full_V, *0.01, 1, "Bulk Start Voltage", "Volts", "bulk_start_voltage", (full_V * 70) / 100, 6, advanced
    unsigned short bulk_I;                          // num, auto, 0.2, 8.0, *0.001, 1, "Bulk Current", "Amps", "bulk_current", 4.0, 3, basic
    unsigned short full_V;                          // num, auto, 12, 63, *0.01, 1, "Full Voltage", "Volts", "full_voltage", 42, 2, basic
    unsigned short complete_I;                      // num, auto, 0.05, (bulk_I*4)/5, *0.001, 2, "Charge Complete Current", "Amps", "charge_complete_below_current", 0.15, 7, advanced
    unsigned char checksum;                         // num, auto, 0, 255, *1, 0, "checksum", "not_displayed", "checksum", 0, -13, basic
}
