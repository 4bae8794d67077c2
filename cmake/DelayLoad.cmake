function(trelv_delay_load target)
endfunction()
