   if (logging) {
     VALIDATE(error, interface.logFree(loghandle));
   }

   if (fclose(fp)) error = -1;
   return error == 0 || error == KIV_COMMON_ERROR_NOT_SUPPORTED ? 0 : error;
}
